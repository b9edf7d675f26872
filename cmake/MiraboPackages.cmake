# Installed headers, and the packages Kalmyr and Mirabo for find_package.
include(CMakePackageConfigHelpers)

function(_mirabo_install_headers directory)
    install(DIRECTORY "${directory}/" DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h")
endfunction()

# Each component of a package is one export set in a file of its own, so that
# asking for one loads no more than that.
function(_mirabo_install_component package component)
    install(EXPORT ${package}${component}Targets NAMESPACE ${package}::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/${package})
endfunction()

function(_mirabo_install_config package)
    set(folder ${CMAKE_INSTALL_LIBDIR}/cmake/${package})
    configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/${package}Config.cmake.in"
        "${PROJECT_BINARY_DIR}/${package}Config.cmake" INSTALL_DESTINATION ${folder}
        PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR)
    write_basic_package_version_file("${PROJECT_BINARY_DIR}/${package}ConfigVersion.cmake"
        COMPATIBILITY SameMinorVersion)
    install(FILES "${PROJECT_BINARY_DIR}/${package}Config.cmake"
        "${PROJECT_BINARY_DIR}/${package}ConfigVersion.cmake" DESTINATION ${folder})
endfunction()

set(_kalmyr_targets Kalmyr KalmyrGui KalmyrQt Plotrel Tilevex)
set(_kalmyr_components Scene Gui Qt Plotrel Tilevex)
foreach(_target _component IN ZIP_LISTS _kalmyr_targets _kalmyr_components)
    if(TARGET ${_target})
        string(TOLOWER "${_component}" _folder)
        _mirabo_install_headers("${PROJECT_SOURCE_DIR}/kalmyr/${_folder}/include")
        _mirabo_install_component(Kalmyr ${_component})
    endif()
endforeach()

if(TARGET Kalmyr)
    foreach(_module animation copies draggers manips)
        _mirabo_install_headers("${PROJECT_SOURCE_DIR}/kalmyr/modules/${_module}/include")
    endforeach()
    _mirabo_install_component(Kalmyr Modules)
    _mirabo_install_headers("${PROJECT_SOURCE_DIR}/kalmyr/base/include")
    _mirabo_install_config(Kalmyr)
endif()

# A host sees the launch interface, an extension the extension API; nothing else
# of the inspector is public.
if(TARGET Mirabo)
    install(DIRECTORY "${PROJECT_SOURCE_DIR}/mirabo/extender/"
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/mirabo/extender FILES_MATCHING PATTERN "*.h"
        PATTERN "private" EXCLUDE)
    install(FILES "${PROJECT_SOURCE_DIR}/mirabo/launch/SoMirabo.h"
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/mirabo/launch OPTIONAL)
    install(EXPORT MiraboTargets NAMESPACE Mirabo::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Mirabo)
    _mirabo_install_config(Mirabo)
endif()
