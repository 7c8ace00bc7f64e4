set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(zamoEmulator qemu-arm-static)
set(zamoDebianArchitecture armhf)
# A remark for those who link with what GCC before version 7 has compiled, not a warning.
add_compile_options(-Wno-psabi)
include(${CMAKE_CURRENT_LIST_DIR}/crossBuild.cmake)
