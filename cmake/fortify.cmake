# Optimised builds get glibc's checked functions, unless the user's flags or the compiler itself
# already choose a level; a second definition is a warning. Sanitizers bring checks of their own.
include(CheckCXXSourceCompiles)

string(TOUPPER "${CMAKE_BUILD_TYPE}" buildType)
set(CMAKE_REQUIRED_FLAGS "${CMAKE_CXX_FLAGS_${buildType}} -O2")
check_cxx_source_compiles("
    #ifdef _FORTIFY_SOURCE
    #error
    #endif
    int main() { return 0; }" ZAMO_FORTIFY_IS_FREE)
unset(CMAKE_REQUIRED_FLAGS)
if(ZAMO_FORTIFY_IS_FREE AND NOT ZAMO_SANITIZE)
    target_compile_definitions(zamo_build_flags INTERFACE
        $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:_FORTIFY_SOURCE=3>)
endif()
