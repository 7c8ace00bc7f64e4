# Several files that are compiled as one take a fraction of the time. Names in their unnamed namespaces
# must differ then, but for kLogModule, which each file of the library that logs has.

# zamo_unite(TARGET GROUP SOURCE...): these files of the target.
function(zamo_unite target group)
    set_source_files_properties(${ARGN} PROPERTIES UNITY_GROUP "${group}")
    set_target_properties(${target} PROPERTIES
        UNITY_BUILD ON
        UNITY_BUILD_MODE GROUP
        UNITY_BUILD_UNIQUE_ID ZAMO_UNIT
        UNITY_BUILD_CODE_BEFORE_INCLUDE "#include \"${PROJECT_SOURCE_DIR}/cmake/unityNames.h\"")
endfunction()

# zamo_unite_directories(TARGET): where the preset asks for it, all files of each directory.
function(zamo_unite_directories target)
    if(ZAMO_UNITE_DIRECTORIES)
        get_target_property(sources ${target} SOURCES)
        foreach(source ${sources})
            get_filename_component(directory ${source} DIRECTORY)
            string(MAKE_C_IDENTIFIER "${directory}" group)
            zamo_unite(${target} "${group}" ${source})
        endforeach()
    endif()
endfunction()
