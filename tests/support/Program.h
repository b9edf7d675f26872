#pragma once

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include <sys/wait.h>
#include <unistd.h>

namespace support {

inline std::string readFile(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// An empty folder that is removed with the object, and files in it.
class TempFolder {
public:
    TempFolder()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "mirabo_XXXXXX").string();
        m_folder = mkdtemp(pattern.data());
    }
    ~TempFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::string& folder() const { return m_folder; }
    std::string path(const std::string& name) const { return m_folder + "/" + name; }
    std::string write(const std::string& name, std::string_view text) const
    {
        std::ofstream(path(name), std::ios::binary) << text;
        return path(name);
    }
    std::string read(const std::string& name) const { return readFile(path(name)); }

private:
    std::string m_folder;
};

/// What a program left behind.
struct Outcome {
    int status = -1; ///< exit code; -1 when a signal ended it
    std::string output;
    std::string errors;
};

/// Runs one of our programs through the shell, with nothing on its standard input.
inline Outcome runProgram(const std::string& program, const std::string& arguments)
{
    const TempFolder folder;
    const std::string command = std::string(MIRABO_RUNTIME_DIR) + "/" + program + " " + arguments
                                + " 2>" + folder.path("errors") + " </dev/null";
    Outcome result;
    FILE* pipe = popen(command.c_str(), "r");
    std::array<char, 4096> part;
    for (std::size_t n = 1; pipe && n > 0;) {
        n = fread(part.data(), 1, part.size(), pipe);
        result.output.append(part.data(), n);
    }
    const int status = pipe ? pclose(pipe) : -1;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.errors = folder.read("errors");
    return result;
}

} // namespace support
