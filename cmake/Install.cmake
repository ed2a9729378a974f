# What "cmake --install" leaves behind: libraries, headers, and what lets hosts find them by CMake or pkg-config. All of
# it carries the major version of Qt in its name, so that one prefix holds a build for Qt 5 and one for Qt 6.
include(CMakePackageConfigHelpers)

set(QV_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/SoftwareUpdateClient-qt${QT_VERSION_MAJOR})
set(QV_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/SoftwareUpdateClient-qt${QT_VERSION_MAJOR})

# Headers that are not listed are internal, and nothing of them is exported.
set(QV_PUBLIC_HEADERS
    src/SoftwareUpdateExport.h
    src/SoftwareUpdateTypes.h
    src/catalogue/PackageIndex.h
    src/catalogue/PackageInfo.h
    src/client/CheckOutcome.h
    src/client/PackageInstaller.h
    src/client/SoftwareUpdateClient.h
    src/dialogs/SoftwareUpdateAvailableDialog.h
    src/dialogs/SoftwareUpdateDialog.h
    src/manager/DownloadManager.h
    src/manager/UpdateResult.h
    src/trust/UpdatePolicy.h
    platform/base/ExceptionQt.h
    platform/base/IOException.h
    platform/base/ParseException.h
    platform/base/PlatformExport.h
    platform/base/SmartHandle.h
    platform/files/FileUtils.h
    platform/files/Unzipper.h
    platform/files/ZipDevice.h
    platform/files/ZipReader.h
    platform/http/HttpAccess.h
    platform/http/HttpAccessHistory.h
    platform/http/HttpClient.h
    platform/http/HttpHeader.h
    platform/http/HttpHost.h
    platform/http/HttpLogin.h
    platform/http/HttpThreads.h
    platform/http/NetworkProxy.h
    platform/http/NodeDB.h
    platform/http/RequestData.h
    platform/log/LogQt.h
    platform/log/MutexLocker.h
    platform/util/ConnectHelpers.h
    platform/util/DialogFlags.h
    platform/util/Preferences.h
    platform/util/QuorvelSoftwareVersion.h
    platform/util/StringUtils.h
    platform/util/VersionNumber.h
    platform/xml/XmlTree.h
    platform/xml/XmlUtils.h
)
if(TARGET qvOnvif)
    list(APPEND QV_PUBLIC_HEADERS onvif/OnvifCameras.h onvif/OnvifExport.h)
endif()
install(FILES ${QV_PUBLIC_HEADERS} DESTINATION ${QV_INCLUDEDIR} COMPONENT development)

# A host that brings the libraries along keeps them in one folder.
set(QV_LIBRARIES qvPlatform SoftwareUpdateClient)
if(TARGET qvOnvif)
    list(APPEND QV_LIBRARIES qvOnvif)
    set_target_properties(qvOnvif PROPERTIES INSTALL_RPATH "$ORIGIN")
endif()
set_target_properties(SoftwareUpdateClient PROPERTIES INSTALL_RPATH "$ORIGIN")
install(TARGETS ${QV_LIBRARIES}
    EXPORT SoftwareUpdateClientTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
    INCLUDES DESTINATION ${QV_INCLUDEDIR})

install(EXPORT SoftwareUpdateClientTargets NAMESPACE qv:: DESTINATION ${QV_CMAKEDIR} COMPONENT development)
configure_package_config_file(
    cmake/SoftwareUpdateClientConfig.cmake.in cmake/SoftwareUpdateClientConfig.cmake
    INSTALL_DESTINATION ${QV_CMAKEDIR}
    PATH_VARS CMAKE_INSTALL_BINDIR)
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/cmake/SoftwareUpdateClientConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/cmake/SoftwareUpdateClientConfig.cmake
    ${PROJECT_BINARY_DIR}/cmake/SoftwareUpdateClientConfigVersion.cmake
    DESTINATION ${QV_CMAKEDIR} COMPONENT development)

string(REGEX REPLACE "[^/]+" ".." PREFIX_FROM_PKGCONFIG ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(QT_VERSION_MAJOR EQUAL 5)
    set(PC_PIC -fPIC) # Qt 6 says so itself
endif()
foreach(name IN LISTS QV_LIBRARIES)
    set(file ${PROJECT_BINARY_DIR}/cmake/${name}-qt${QT_VERSION_MAJOR}.pc)
    configure_file(cmake/${name}.pc.in ${file} @ONLY)
    install(FILES ${file} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()
