# The appliance's own platform libraries. It may have them without the links that a linker looks
# for, and without their headers; the headers of this project describe the same functions.
find_path(ZAMO_PLATFORM_INCLUDE_DIR zamo/core.h
    PATHS ${CMAKE_CURRENT_SOURCE_DIR}/platform/include
    DOC "Where zamo/core.h and its kin are")

foreach(name core sdk netsdk serviceconf km)
    find_library(ZAMO_${name}_LIBRARY NAMES zamo${name} libzamo${name}.so.7 REQUIRED)
    add_library(zamo${name} SHARED IMPORTED)
    set_target_properties(zamo${name} PROPERTIES
        IMPORTED_LOCATION ${ZAMO_${name}_LIBRARY}
        INTERFACE_INCLUDE_DIRECTORIES ${ZAMO_PLATFORM_INCLUDE_DIR})
endforeach()
