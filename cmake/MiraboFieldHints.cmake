# mirabo_field_hints(TARGET)
# Compiles what the toolkit's headers say of fields into TARGET.
function(mirabo_field_hints target)
    set(table "${CMAKE_CURRENT_BINARY_DIR}/field_hints.cpp")
    set(script "${PROJECT_SOURCE_DIR}/cmake/field_hints.py")
    set(directories "${PROJECT_SOURCE_DIR}/kalmyr")
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/kalmyr/*.h")
    add_custom_command(
        OUTPUT "${table}"
        COMMAND Python3::Interpreter "${script}" --out "${table}" ${directories}
        DEPENDS ${headers} "${script}"
        COMMENT "Collecting what is known of fields"
        VERBATIM)
    target_sources(${target} PRIVATE "${table}")
    target_include_directories(${target} PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}/plugins/defaults")
    set_source_files_properties("${table}" PROPERTIES SKIP_AUTOGEN ON GENERATED ON)
endfunction()
