# Toolchain for 32-bit big-endian PowerPC, with Debian's cross compiler; programs and tests run under qemu-ppc.
# Libraries that Debian does not ship for this target come from the folder that scripts/powerpc fills.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ppc)

set(CMAKE_C_COMPILER powerpc-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER powerpc-linux-gnu-g++)

# The same rule as in scripts/powerpc: outside the project tree, so that every work tree shares it.
if(DEFINED ENV{FAULTKEEPER_CACHE_DIR})
    set(faultkeeperCache "$ENV{FAULTKEEPER_CACHE_DIR}")
elseif(DEFINED ENV{XDG_CACHE_HOME})
    set(faultkeeperCache "$ENV{XDG_CACHE_HOME}/faultkeeper")
else()
    set(faultkeeperCache "$ENV{HOME}/.cache/faultkeeper")
endif()

set(CMAKE_FIND_ROOT_PATH /usr/powerpc-linux-gnu "${faultkeeperCache}/powerpc/current")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# pkg-config would answer for the machine that builds.
set(ENV{PKG_CONFIG_LIBDIR} "${faultkeeperCache}/powerpc/current/lib/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")

set(CMAKE_CROSSCOMPILING_EMULATOR "qemu-ppc;-L;/usr/powerpc-linux-gnu")
