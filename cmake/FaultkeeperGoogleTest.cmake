# Provides GTest::gtest, GTest::gtest_main, GTest::gmock and GTest::gmock_main: the installed libraries, or, for
# another target, libraries built from the sources that Debian's googletest package installs.

if(NOT CMAKE_CROSSCOMPILING)
    find_package(GTest 1.12 REQUIRED)
    return()
endif()

set(FAULTKEEPER_GOOGLETEST_SOURCES /usr/src/googletest CACHE PATH "GoogleTest's sources, for cross builds")
if(NOT EXISTS "${FAULTKEEPER_GOOGLETEST_SOURCES}/CMakeLists.txt")
    message(FATAL_ERROR "No GoogleTest sources in ${FAULTKEEPER_GOOGLETEST_SOURCES}: run scripts/setup")
endif()

set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(BUILD_GMOCK ON CACHE BOOL "" FORCE)
add_subdirectory("${FAULTKEEPER_GOOGLETEST_SOURCES}" "${PROJECT_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL)

foreach(library gtest gtest_main gmock gmock_main)
    # Its own findings are not ours to mend, and its lint settings are not ours.
    set_target_properties(${library} PROPERTIES CXX_CLANG_TIDY "" EXPORT_COMPILE_COMMANDS OFF)
    target_compile_options(${library} PRIVATE -w)
    if(NOT TARGET GTest::${library})
        add_library(GTest::${library} ALIAS ${library})
    endif()
endforeach()
