# 32-bit ARM, as on the TV: the cross compiler with the sysroot that Scripts/armv7-sysroot makes.
# The programs run under user-mode emulation.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# A note about the ABI of GCC 7 is irrelevant here.
set(CMAKE_CXX_FLAGS_INIT "-mcpu=cortex-a15 -mfpu=neon-vfpv4 -Wno-psabi")

execute_process(
    COMMAND ${CMAKE_CURRENT_LIST_DIR}/../Scripts/armv7-sysroot --path
    OUTPUT_VARIABLE armv7_place OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
if(NOT IS_DIRECTORY ${armv7_place})
    message(FATAL_ERROR "There is no sysroot; Scripts/armv7-sysroot makes it.")
endif()

set(CMAKE_SYSROOT ${armv7_place}/sysroot)
# Another root, a TV SDK's for example.
if(DEFINED ENV{VQM_SYSROOT})
    set(CMAKE_SYSROOT $ENV{VQM_SYSROOT})
endif()
set(CMAKE_FIND_ROOT_PATH ${CMAKE_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_DIR} "")
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${CMAKE_SYSROOT}/usr/lib/arm-linux-gnueabihf/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)

set(CMAKE_CROSSCOMPILING_EMULATOR ${armv7_place}/without-statx qemu-arm -L ${CMAKE_SYSROOT})
# The linker does not look for the libraries of libraries in a sysroot's multiarch folders.
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-Wl,-rpath-link,${CMAKE_SYSROOT}/usr/lib/arm-linux-gnueabihf:${CMAKE_SYSROOT}/lib/arm-linux-gnueabihf")
