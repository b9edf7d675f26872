# Third-party libraries. The toolkit's public headers need none of them.

find_package(Threads REQUIRED)
find_package(ZLIB REQUIRED)
find_package(JPEG REQUIRED)
find_package(PNG REQUIRED)
find_package(TIFF REQUIRED)
find_package(GIF REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(EPOXY REQUIRED IMPORTED_TARGET epoxy)
pkg_check_modules(EGL REQUIRED IMPORTED_TARGET egl)
pkg_check_modules(GLU REQUIRED IMPORTED_TARGET glu)
pkg_check_modules(FREETYPE REQUIRED IMPORTED_TARGET freetype2)
pkg_check_modules(FONTCONFIG REQUIRED IMPORTED_TARGET fontconfig)
pkg_check_modules(HARFBUZZ REQUIRED IMPORTED_TARGET harfbuzz)
pkg_check_modules(FRIBIDI REQUIRED IMPORTED_TARGET fribidi)
find_package(Qt5 5.15 REQUIRED COMPONENTS Widgets PrintSupport)
find_program(MIRABO_RSVG_CONVERT rsvg-convert REQUIRED)
find_package(Python3 REQUIRED COMPONENTS Interpreter)

# The compiler ships libbacktrace on most systems; call stacks are poorer without it.
include(CheckCXXSourceCompiles)
set(CMAKE_REQUIRED_LIBRARIES backtrace)
check_cxx_source_compiles("
    #include <backtrace.h>
    int main() { return backtrace_create_state(nullptr, 1, nullptr, nullptr) == nullptr; }"
    KALMYR_HAVE_LIBBACKTRACE)
unset(CMAKE_REQUIRED_LIBRARIES)
