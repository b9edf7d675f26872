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
