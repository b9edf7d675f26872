# Options, compiler flags and output folders shared by every target.

option(MIRABO_WERROR "Treat compiler warnings as errors" ON)
option(MIRABO_CCACHE "Compile through ccache when it is installed" ON)
option(MIRABO_BENCHMARKS "Build the benchmarks" OFF)
option(MIRABO_FUZZERS "Build the fuzzers (needs clang)" OFF)
set(MIRABO_SANITIZE "" CACHE STRING "Sanitizers for every target: address;undefined, thread or empty")

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_SCAN_FOR_MODULES OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

include(GNUInstallDirs)
# Programs find their libraries relative to themselves, in the build tree and in
# the install tree alike, so that both can be moved and run in place.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib/static")
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

# Folder of the inspector's plug-ins, relative to the folder of libMirabo.
set(MIRABO_PLUGIN_FOLDER "mirabo-plugins")

add_library(mirabo_options INTERFACE)
target_compile_options(mirabo_options INTERFACE -Wall -Wextra $<$<BOOL:${MIRABO_WERROR}>:-Werror>)
target_compile_definitions(mirabo_options INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)

# A library names all that it uses; the sanitizers leave their own entry points to
# the program, though.
set(MIRABO_NO_UNDEFINED $<$<NOT:$<BOOL:${MIRABO_SANITIZE}>>:LINKER:--no-undefined>)

if(MIRABO_SANITIZE)
    list(JOIN MIRABO_SANITIZE "," _sanitizers)
    # Type checks of virtual calls would need the type information of classes
    # that are hidden on purpose.
    add_compile_options(-fsanitize=${_sanitizers} -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${_sanitizers})
    if("undefined" IN_LIST MIRABO_SANITIZE)
        add_compile_options(-fno-sanitize=vptr -fno-sanitize-recover=undefined)
    endif()
endif()

if(MIRABO_CCACHE)
    find_program(MIRABO_CCACHE_PROGRAM ccache)
    if(MIRABO_CCACHE_PROGRAM)
        set(CMAKE_C_COMPILER_LAUNCHER "${MIRABO_CCACHE_PROGRAM}")
        set(CMAKE_CXX_COMPILER_LAUNCHER "${MIRABO_CCACHE_PROGRAM}")
    endif()
endif()
