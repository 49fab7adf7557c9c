# Debian packages, one for each component; scripts/package makes them. The folders written into the service's unit file
# are those of CMAKE_INSTALL_PREFIX, so the packages install there, too.

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_PACKAGE_NAME faultkeeper)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_VENDOR Faultkeeper)
set(CPACK_PACKAGE_CONTACT "Faultkeeper developers <faultkeeper@localhost>")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/src" "${PROJECT_BINARY_DIR}/host")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(libraryPackage "libfaultkeeper${PROJECT_VERSION_MAJOR}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "${libraryPackage}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "faults of a vehicle console, the library
 Reports, combines and displays faults.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libfaultkeeper-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${libraryPackage} (= ${PROJECT_VERSION}), libexpat1-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "faults of a vehicle console, for building programs
 Headers, the static library, and what CMake and pkg-config find them by.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME faultkeeper-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${libraryPackage} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOLS_PACKAGE_CONTROL_EXTRA
    "${PROJECT_SOURCE_DIR}/config/debian/postinst" "${PROJECT_SOURCE_DIR}/config/debian/prerm")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "faults of a vehicle console, owner and command line
 faultkeeperd owns the state of all faults, faultkeeperctl reports, shows and explains them.")

include(CPack)
