#include "Options.h"

#include <charconv>
#include <cstring>
#include <string_view>

namespace {

constexpr int kMaxSide = 16384;

bool parseSize(std::string_view text, int& width, int& height)
{
    const char* end = text.data() + text.size();
    const auto w = std::from_chars(text.data(), end, width);
    if (w.ec != std::errc() || w.ptr == end || *w.ptr != 'x')
        return false;
    const auto h = std::from_chars(w.ptr + 1, end, height);
    return h.ec == std::errc() && h.ptr == end && width > 0 && height > 0 && width <= kMaxSide
           && height <= kMaxSide;
}

} // namespace

Options parseOptions(int argc, char** argv)
{
    Options options;
    const auto value = [&](int& i) -> const char* {
        if (i + 1 < argc)
            return argv[++i];
        options.error = std::string(argv[i]) + " wants a value";
        return "";
    };
    for (int i = 1; i < argc && options.error.empty(); ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--help" || argument == "-h")
            options.help = true;
        else if (argument == "--version")
            options.version = true;
        else if (argument == "--screenshot")
            options.screenshot = value(i);
        else if (argument == "--size") {
            const std::string_view size = value(i);
            if (options.error.empty() && !parseSize(size, options.width, options.height))
                options.error =
                    "--size wants WIDTHxHEIGHT in pixels, not \"" + std::string(size) + "\"";
        } else if (argument.size() > 1 && argument[0] == '-')
            options.error = "unknown option \"" + std::string(argument) + "\"";
        else if (!options.file.empty())
            options.error = "one file at a time";
        else
            options.file = argument;
    }
    return options;
}

Arguments::Arguments(const std::string& program, const std::string& file) : m_texts{program}
{
    if (!file.empty())
        m_texts.push_back(file);
    for (std::string& text : m_texts)
        m_values.push_back(text.data());
    m_count = static_cast<int>(m_values.size());
    m_values.push_back(nullptr);
}
