# Installs the build in BUILD_DIR, moves the installed tree, and builds and runs
# the projects beside this file against it: neither the source tree nor the build
# tree is in their sight.
#   cmake -D BUILD_DIR=... -D WORK_DIR=... -P package_test.cmake

function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${WORK_DIR}/installed")
file(RENAME "${WORK_DIR}/installed" "${WORK_DIR}/moved")

foreach(project scene inspector extension)
    if(NOT project STREQUAL "scene"
            AND NOT EXISTS "${WORK_DIR}/moved/include/mirabo/launch/SoMirabo.h")
        message(STATUS "the inspector is not installed: its project is left out")
        continue()
    endif()
    run("${CMAKE_COMMAND}" -G Ninja -S "${CMAKE_CURRENT_LIST_DIR}/${project}"
        -B "${WORK_DIR}/${project}" -D "CMAKE_PREFIX_PATH=${WORK_DIR}/moved")
    run("${CMAKE_COMMAND}" --build "${WORK_DIR}/${project}")
    run("${WORK_DIR}/${project}/consumer")
endforeach()

# The Debian package holds all that the programs need: it is unpacked into an empty
# folder and they are run from there.
find_program(DPKG_DEB dpkg-deb)
find_program(DPKG_SHLIBDEPS dpkg-shlibdeps)
if(NOT DPKG_DEB OR NOT DPKG_SHLIBDEPS)
    message(STATUS "not on Debian: its package is left out")
    return()
endif()
cmake_path(GET CMAKE_COMMAND PARENT_PATH cmake_folder)
set(root "${WORK_DIR}/root")
run("${cmake_folder}/cpack" -G DEB --config "${BUILD_DIR}/CPackConfig.cmake" -B "${WORK_DIR}/deb")
file(GLOB package "${WORK_DIR}/deb/*.deb")
run("${DPKG_DEB}" -x "${package}" "${root}")
execute_process(COMMAND "${DPKG_DEB}" -f "${package}" Depends
    OUTPUT_VARIABLE depends COMMAND_ERROR_IS_FATAL ANY)
foreach(needed libc6 libqt5widgets5 libepoxy0)
    if(NOT depends MATCHES "${needed}")
        message(FATAL_ERROR "the package does not ask for ${needed}: ${depends}")
    endif()
endforeach()
set(scene "${CMAKE_CURRENT_LIST_DIR}/../../examples/scenes/hello.ky")
run("${root}/usr/bin/kmr" info "${scene}")
if(EXISTS "${root}/usr/bin/mirabo")
    run("${root}/usr/bin/mirabo" --screenshot "${WORK_DIR}/window.png" "${scene}")
    foreach(file applications/dev.mirabo.Mirabo.desktop mime/packages/dev.mirabo.Mirabo.xml
            icons/hicolor/scalable/apps/dev.mirabo.Mirabo.svg)
        if(NOT EXISTS "${root}/usr/share/${file}")
            message(FATAL_ERROR "the package lacks ${file}")
        endif()
    endforeach()
endif()
