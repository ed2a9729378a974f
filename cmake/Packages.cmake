# Debian packages, made by cpack in a build folder that was configured with CMAKE_INSTALL_PREFIX=/usr: the two libraries,
# what a host is built with, and the updater. The updater knows no Qt: whichever build it comes from, it is one package.
if(NOT TARGET UpdateInstaller)
    set(CPACK_COMPONENTS_ALL runtime development)
else()
    set(CPACK_COMPONENTS_ALL runtime development updater)
endif()
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR Quorvel)
set(CPACK_PACKAGE_CONTACT "Quorvel <software@quorvel.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)

set(runtime libsoftwareupdateclient-qt${QT_VERSION_MAJOR}-${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS $<TARGET_FILE_DIR:qvPlatform>)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "${PROJECT_DESCRIPTION}
 The libraries, for applications on Qt ${QT_VERSION_MAJOR}.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libsoftwareupdateclient-qt${QT_VERSION_MAJOR}-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime} (= ${PROJECT_VERSION}), qt6-base-dev")
if(QT_VERSION_MAJOR EQUAL 5)
    set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime} (= ${PROJECT_VERSION}), qtbase5-dev")
endif()
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS update-installer)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "${PROJECT_DESCRIPTION}
 Headers, CMake and pkg-config files, for applications on Qt ${QT_VERSION_MAJOR}.")

set(CPACK_DEBIAN_UPDATER_PACKAGE_NAME update-installer)
set(CPACK_DEBIAN_UPDATER_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_UPDATER_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_UPDATER_DESCRIPTION "${PROJECT_DESCRIPTION}
 The program that replaces an application's folder and starts the new version; applications bring a copy of it.")
include(CPack)
