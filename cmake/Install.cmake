# What `cmake --install` puts into a prefix: headers, static libraries, the tool, and how to find them again by
# find_package(AuriskSDK) or by `pkg-config aurisk-sdk`. Nothing in it names the prefix, so the tree can be moved.

include(CMakePackageConfigHelpers)

set(headers ${CMAKE_INSTALL_INCLUDEDIR}/aurisk-sdk)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/AuriskSDK)
set(resources ${CMAKE_INSTALL_DATADIR}/aurisk-sdk/resources.bundle)

# Headers that only sources include stay behind.
install(DIRECTORY AuriskSDK DESTINATION ${headers} FILES_MATCHING PATTERN "*.h"
    PATTERN "Precondition.h" EXCLUDE PATTERN "BitCodec.h" EXCLUDE PATTERN "JsonFields.h" EXCLUDE
    PATTERN "Advertiser.h" EXCLUDE
    PATTERN "BlueZGattServer.h" EXCLUDE
    PATTERN "BusAnswer.h" EXCLUDE
    PATTERN "GattTable.h" EXCLUDE)
install(DIRECTORY Simulator DESTINATION ${headers} FILES_MATCHING PATTERN "*.h"
    PATTERN "AidFrame.h" EXCLUDE
    PATTERN "AidMembers.h" EXCLUDE
    PATTERN "SimulatedCentral.h" EXCLUDE
    PATTERN "SimulatedLink.h" EXCLUDE
    PATTERN "WorldReader.h" EXCLUDE)

install(TARGETS AuriskSDK AuriskSimulator EXPORT AuriskSDK ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(EXPORT AuriskSDK NAMESPACE AuriskSDK:: FILE AuriskSDKTargets.cmake DESTINATION ${package})
install(DIRECTORY AuriskSDK/Resources/resources.bundle/ DESTINATION ${resources})
install(TARGETS aurisk RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

configure_package_config_file(cmake/AuriskSDKConfig.cmake.in ${PROJECT_BINARY_DIR}/AuriskSDKConfig.cmake
    INSTALL_DESTINATION ${package} PATH_VARS resources NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/AuriskSDKConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/AuriskSDKConfig.cmake ${PROJECT_BINARY_DIR}/AuriskSDKConfigVersion.cmake
    DESTINATION ${package})

set(pkgconfig ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH AURISK_PREFIX_FROM_PC /prefix/${pkgconfig} /prefix)
string(REGEX REPLACE "/$" "" AURISK_PREFIX_FROM_PC "${AURISK_PREFIX_FROM_PC}")
configure_file(cmake/aurisk-sdk.pc.in ${PROJECT_BINARY_DIR}/aurisk-sdk.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/aurisk-sdk.pc DESTINATION ${pkgconfig})

install(FILES Tools/aurisk/aurisk.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES Tools/aurisk/completion.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME aurisk)
