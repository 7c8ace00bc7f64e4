# zamo_unite_directories(TARGET): where the preset asks for it, the files of one directory are compiled
# as one, which takes a fraction of the time. Names in their unnamed namespaces must differ then, but
# for kLogModule, which each file that logs has.
function(zamo_unite_directories target)
    get_target_property(sources ${target} SOURCES)
    foreach(source ${sources})
        get_filename_component(directory ${source} DIRECTORY)
        string(MAKE_C_IDENTIFIER "${directory}" group)
        set_source_files_properties(${source} PROPERTIES UNITY_GROUP "${group}")
    endforeach()
    set_target_properties(${target} PROPERTIES
        UNITY_BUILD ${ZAMO_UNITE_DIRECTORIES}
        UNITY_BUILD_MODE GROUP
        UNITY_BUILD_UNIQUE_ID ZAMO_UNIT
        UNITY_BUILD_CODE_BEFORE_INCLUDE "#include \"${PROJECT_SOURCE_DIR}/cmake/unityNames.h\"")
endfunction()
