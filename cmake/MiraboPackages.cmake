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

# Scene files open in the inspector from the desktop's file manager and menu.
if(UNIX AND NOT APPLE)
    set(_desktop "${PROJECT_SOURCE_DIR}/apps/mirabo/desktop/dev.mirabo.Mirabo")
    install(FILES "${_desktop}.desktop" DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
    install(FILES "${_desktop}.xml" DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages)
    install(FILES "${PROJECT_SOURCE_DIR}/mirabo/resources/svg/MiraboIcon.svg"
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps
        RENAME dev.mirabo.Mirabo.svg)
endif()

# "cpack -G DEB" in the build folder.
set(CPACK_PACKAGE_NAME mirabo)
set(CPACK_PACKAGE_VENDOR Mirabo)
set(CPACK_PACKAGE_CONTACT "Mirabo <team@mirabo.dev>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Live inspector of scene graphs, and its 3D toolkit")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_STRIP_FILES ON)
set(CPACK_GENERATOR DEB)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/lib")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libegl-mesa0, libgl1-mesa-dri")
include(CPack)
