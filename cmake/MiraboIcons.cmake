# mirabo_icons(TARGET DIRECTORY)
# Renders DIRECTORY/*.svg into PNG pictures of one and two times the size and
# compiles them into TARGET below ":/Mirabo_icons/Icons/".
function(mirabo_icons target directory)
    file(GLOB pictures CONFIGURE_DEPENDS "${directory}/*.svg")
    if(NOT pictures)
        message(STATUS "${target}: no icons yet")
        return()
    endif()
    set(folder "${CMAKE_CURRENT_BINARY_DIR}/icons")
    set(script "${PROJECT_SOURCE_DIR}/cmake/render_icons.py")
    add_custom_command(
        OUTPUT "${folder}/qrc_mirabo_icons.cpp"
        COMMAND Python3::Interpreter "${script}" --rsvg "${MIRABO_RSVG_CONVERT}"
            --out "${folder}" "${directory}"
        COMMAND Qt5::rcc --name mirabo_icons --output "${folder}/qrc_mirabo_icons.cpp"
            "${folder}/mirabo_icons.qrc"
        DEPENDS ${pictures} "${script}"
        COMMENT "Rendering icons"
        VERBATIM)
    target_sources(${target} PRIVATE "${folder}/qrc_mirabo_icons.cpp")
    set_source_files_properties("${folder}/qrc_mirabo_icons.cpp" PROPERTIES
        SKIP_AUTOGEN ON GENERATED ON)
endfunction()
