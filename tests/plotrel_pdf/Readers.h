#pragma once

#include "ReferencePainter.h"

#include <support/Program.h>

#include <cstdlib>
#include <string>

namespace support {

inline bool hasProgram(const std::string& name)
{
    return std::system(("command -v " + name + " >/dev/null 2>&1").c_str()) == 0;
}

/// Runs a program that is installed; its errors are part of the output.
inline Outcome runInstalled(const std::string& command)
{
    Outcome result;
    FILE* pipe = popen((command + " 2>&1 </dev/null").c_str(), "r");
    std::array<char, 4096> part;
    for (std::size_t n = 1; pipe && n > 0;) {
        n = fread(part.data(), 1, part.size(), pipe);
        result.output.append(part.data(), n);
    }
    const int status = pipe ? pclose(pipe) : -1;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

/// Returns a PDF file as drawn by poppler, in the size of another picture. It must not complain.
inline Picture popplerPicture(const std::string& file, const Picture& like)
{
    const TempFolder folder;
    const Outcome outcome = runInstalled("pdftoppm -scale-to-x " + std::to_string(like.width)
                                         + " -scale-to-y " + std::to_string(like.height)
                                         + " -singlefile " + file + " " + folder.path("a"));
    EXPECT_EQ(outcome.output, "");
    return Picture::read(folder.path("a.ppm"));
}

/// Returns a PDF or PostScript file as drawn by ghostscript, which must not complain.
inline Picture ghostscriptPicture(const std::string& file, const Picture& like,
                                  double pixelsPerMillimetre)
{
    const TempFolder folder;
    const Outcome outcome = runInstalled(
        "gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=ppmraw -r"
        + std::to_string(pixelsPerMillimetre * 25.4) + " -g" + std::to_string(like.width) + "x"
        + std::to_string(like.height) + " -sOutputFile=" + folder.path("a.ppm") + " " + file);
    EXPECT_EQ(outcome.output, "");
    return Picture::read(folder.path("a.ppm"));
}

} // namespace support

#define SKIP_WITHOUT(program)                                                                      \
    if (!support::hasProgram(program))                                                             \
    GTEST_SKIP() << program " is not installed"
