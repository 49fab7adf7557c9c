# Provides CLI11::CLI11 and nlohmann_json::nlohmann_json. For another target the installed headers serve as well, as
# they hold no code of this machine's; only these two folders are linked into the include path, because all of
# /usr/include would bring in this machine's own system headers.

include_guard(GLOBAL)

if(NOT CMAKE_CROSSCOMPILING)
    find_package(CLI11 REQUIRED)
    find_package(nlohmann_json REQUIRED)
    # Tests outside apps/ link what uses them.
    set_target_properties(CLI11::CLI11 nlohmann_json::nlohmann_json PROPERTIES IMPORTED_GLOBAL TRUE)
    return()
endif()

function(faultkeeper_add_header_only target folder)
    if(NOT IS_DIRECTORY "/usr/include/${folder}")
        message(FATAL_ERROR "No headers in /usr/include/${folder}: run scripts/setup")
    endif()
    set(root "${PROJECT_BINARY_DIR}/header-only/${folder}")
    file(MAKE_DIRECTORY "${root}")
    file(CREATE_LINK "/usr/include/${folder}" "${root}/${folder}" SYMBOLIC)
    add_library(${target} INTERFACE IMPORTED GLOBAL)
    target_include_directories(${target} INTERFACE "${root}")
    target_compile_features(${target} INTERFACE cxx_std_11)
endfunction()

faultkeeper_add_header_only(CLI11::CLI11 CLI)
faultkeeper_add_header_only(nlohmann_json::nlohmann_json nlohmann)
