# What other projects find the installed library by: find_package(Faultkeeper) and pkg-config. Both work wherever the
# tree is moved to. Included when all targets are there.

include(CMakePackageConfigHelpers)

set(packageFolder "${CMAKE_INSTALL_LIBDIR}/cmake/Faultkeeper")
set(pkgConfigFolder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

install(EXPORT FaultkeeperTargets NAMESPACE Faultkeeper:: DESTINATION "${packageFolder}" COMPONENT development)
if(TARGET FaultkeeperAPIStatic)
    install(EXPORT FaultkeeperStaticTargets NAMESPACE Faultkeeper:: DESTINATION "${packageFolder}"
        COMPONENT development)
    get_target_property(FAULTKEEPER_STATIC_PACKAGES FaultkeeperHostStatic FAULTKEEPER_FIND_PACKAGES)
    get_target_property(FAULTKEEPER_STATIC_REQUIRES FaultkeeperHostStatic FAULTKEEPER_PC_REQUIRES)
endif()

configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/FaultkeeperConfig.cmake.in" FaultkeeperConfig.cmake
    INSTALL_DESTINATION "${packageFolder}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/FaultkeeperConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/FaultkeeperConfig.cmake" "${PROJECT_BINARY_DIR}/FaultkeeperConfigVersion.cmake"
    DESTINATION "${packageFolder}" COMPONENT development)

# Where the host puts its headers is the host's affair, and told by its target.
set(FAULTKEEPER_PC_CFLAGS "-I\${includedir}")
get_target_property(hostFolders FaultkeeperHost INTERFACE_INCLUDE_DIRECTORIES)
string(REGEX MATCHALL "\\$<INSTALL_INTERFACE:[^>]*>" hostFolders "${hostFolders}")
foreach(folder ${hostFolders})
    string(REGEX REPLACE ".*INSTALL_INTERFACE:(.*)>" "\\1" folder "${folder}")
    if(NOT IS_ABSOLUTE "${folder}")
        set(folder "\${prefix}/${folder}")
    endif()
    string(APPEND FAULTKEEPER_PC_CFLAGS " -I${folder}")
endforeach()
file(RELATIVE_PATH FAULTKEEPER_PC_TO_PREFIX "/prefix/${pkgConfigFolder}" "/prefix")
string(REGEX REPLACE "/$" "" FAULTKEEPER_PC_TO_PREFIX "${FAULTKEEPER_PC_TO_PREFIX}")
configure_file("${CMAKE_CURRENT_LIST_DIR}/faultkeeper.pc.in" faultkeeper.pc @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/faultkeeper.pc" DESTINATION "${pkgConfigFolder}" COMPONENT development)
if(TARGET FaultkeeperAPIStatic)
    configure_file("${CMAKE_CURRENT_LIST_DIR}/faultkeeper-static.pc.in" faultkeeper-static.pc @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/faultkeeper-static.pc" DESTINATION "${pkgConfigFolder}"
        COMPONENT development)
endif()
