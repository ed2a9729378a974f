# Debian packages, made by cpack in a build folder that was configured with CMAKE_INSTALL_PREFIX=/usr: the two libraries
# and what a host is built with, for either Qt; from the build for Qt 6 also the two programs, which are one package
# each, whatever Qt the hosts use.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR Quorvel)
set(CPACK_PACKAGE_CONTACT "Quorvel <software@quorvel.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each description begins with its own
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 0quorvel1)
set(CPACK_DEBIAN_PACKAGE_SOURCE softwareupdateclient)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE https://www.quorvel.example/en/downloads)
set(packageVersion ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})

set(runtime libsoftwareupdateclient-qt${QT_VERSION_MAJOR}-${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "software updates for hosts of network cameras (Qt ${QT_VERSION_MAJOR})
SoftwareUpdateClient gives a desktop application for network cameras its
updates: its own and the firmware of every camera it manages.

These are the libraries, for applications on Qt ${QT_VERSION_MAJOR}.")

set(development libsoftwareupdateclient-qt${QT_VERSION_MAJOR}-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${development})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(qtDevelopment qt6-base-dev)
if(QT_VERSION_MAJOR EQUAL 5)
    set(qtDevelopment qtbase5-dev)
endif()
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime} (= ${packageVersion}), ${qtDevelopment}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS update-installer)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "software updates for hosts of network cameras (Qt ${QT_VERSION_MAJOR}, headers)
SoftwareUpdateClient gives a desktop application for network cameras its
updates: its own and the firmware of every camera it manages.

These are headers, CMake and pkg-config files and the guide, for building
applications on Qt ${QT_VERSION_MAJOR}.")

set(CPACK_DEBIAN_UPDATER_PACKAGE_NAME update-installer)
set(CPACK_DEBIAN_UPDATER_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_UPDATER_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_UPDATER_DESCRIPTION "replaces an application's folder by its new version
UpdateInstaller swaps the folder of an application for that of its new
version in one step and starts the new version. It goes back to the old one
if the new one does not come up, and undoes what was interrupted.

Applications that update themselves bring a copy of it.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME qv-catalogue)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS minisign)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "checks the catalogue of an update server
For those who run an update server for SoftwareUpdateClient: finds faults in
its catalogue, prints the packages in it as clients read them, and tells what
an installation would be offered. Writes sizes and hashes of the packages into
the catalogue for minisign to sign, and verifies what it has signed.")

set(CPACK_COMPONENTS_ALL runtime development)
if(QT_VERSION_MAJOR EQUAL 6 AND TARGET UpdateInstaller)
    list(APPEND CPACK_COMPONENTS_ALL updater)
endif()
if(QT_VERSION_MAJOR EQUAL 6 AND TARGET qv-catalogue)
    list(APPEND CPACK_COMPONENTS_ALL tools)
endif()

# What stands in /usr/share, in packages alone: who installs otherwise has the sources.
string(TIMESTAMP packageDate "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(cmake/changelog.Debian.in cmake/changelog.Debian @ONLY)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} COMPONENT)
    set(package ${CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME})
    set(folder ${CMAKE_INSTALL_DATADIR}/doc/${package})
    install(FILES CHANGELOG.md DESTINATION ${folder} RENAME changelog COMPONENT ${component} EXCLUDE_FROM_ALL)
    install(FILES ${PROJECT_BINARY_DIR}/cmake/changelog.Debian DESTINATION ${folder}
        COMPONENT ${component} EXCLUDE_FROM_ALL)
    install(FILES cmake/lintian/${package} DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
        COMPONENT ${component} EXCLUDE_FROM_ALL OPTIONAL)
endforeach()
set(folder ${CMAKE_INSTALL_DATADIR}/doc/${development})
install(FILES README.md DESTINATION ${folder} COMPONENT development EXCLUDE_FROM_ALL)
install(FILES docs/hosts.md docs/catalogue.md docs/security.md DESTINATION ${folder}/docs COMPONENT development EXCLUDE_FROM_ALL)
install(DIRECTORY docs/images DESTINATION ${folder}/docs COMPONENT development EXCLUDE_FROM_ALL)
install(FILES docs/catalogue.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_TOOLS_PACKAGE_NAME}
    COMPONENT tools EXCLUDE_FROM_ALL)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/compress-docs.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/trigger-ldconfig.cmake)
include(CPack)
