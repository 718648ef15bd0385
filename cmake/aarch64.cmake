# Builds for Linux on 64-bit ARM with Debian's cross compiler. QUORVEL_SYSROOT, a cache or environment variable, names a
# folder with the libraries of that machine; scripts/arm64.sh makes one. What is built runs under the emulator.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

if(NOT QUORVEL_SYSROOT)
  set(QUORVEL_SYSROOT "$ENV{QUORVEL_SYSROOT}")
endif()
if(NOT IS_DIRECTORY "${QUORVEL_SYSROOT}/usr")
  message(FATAL_ERROR "QUORVEL_SYSROOT names no sysroot: '${QUORVEL_SYSROOT}' (scripts/arm64.sh makes one)")
endif()
# Checks of the compiler read this file too, in projects that lack the cache.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QUORVEL_SYSROOT)

set(CMAKE_SYSROOT ${QUORVEL_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${QUORVEL_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${QUORVEL_SYSROOT}/usr/lib/aarch64-linux-gnu/pkgconfig:${QUORVEL_SYSROOT}/usr/share/pkgconfig)

find_program(QUORVEL_ARM64_EMULATOR NAMES qemu-aarch64-static qemu-aarch64 REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR ${QUORVEL_ARM64_EMULATOR} -L ${QUORVEL_SYSROOT})
