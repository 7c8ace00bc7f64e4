# Builds for another architecture with Debian's cross compiler. The libraries are those of the root
# that scripts/foreign-root makes, or of another one: -DCMAKE_SYSROOT=DIRECTORY.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${CMAKE_LIBRARY_ARCHITECTURE}-gcc)
set(CMAKE_CXX_COMPILER ${CMAKE_LIBRARY_ARCHITECTURE}-g++)

if(NOT CMAKE_SYSROOT)
    get_filename_component(CMAKE_SYSROOT
        ${CMAKE_CURRENT_LIST_DIR}/../build/root-${zamoDebianArchitecture} ABSOLUTE)
endif()
# Without -L, which would lead the test programs' "/" into the root: scripts/arm-test puts the
# libraries where they belong.
set(CMAKE_CROSSCOMPILING_EMULATOR /usr/bin/${zamoEmulator})

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR}
    ${CMAKE_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
