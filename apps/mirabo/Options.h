#pragma once

#include <string>
#include <vector>

/// The command line.
struct Options {
    bool help = false;
    bool version = false;
    std::string screenshot; ///< file to write; empty: none
    int width = 0;          ///< pixels; 0: the tool's own size
    int height = 0;
    std::string file;  ///< scene to open; empty: none
    std::string error; ///< what is wrong with the command line; empty: nothing
};

Options parseOptions(int argc, char** argv);

/// A command line of its own for the application: the program and, where there is one, the file.
/// Must outlive the application.
class Arguments {
public:
    Arguments(const std::string& program, const std::string& file);
    int& count() { return m_count; }
    char** values() { return m_values.data(); }

private:
    std::vector<std::string> m_texts;
    std::vector<char*> m_values;
    int m_count;
};
