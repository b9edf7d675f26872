#include "IoSupport.h"

#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodes/SoSeparator.h>

#include <unistd.h>

#include <fstream>
#include <sstream>

namespace io {

std::string IoTest::folder()
{
    if (m_folder.empty()) {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "kalmyr_io_XXXXXX").string();
        m_folder = mkdtemp(pattern.data());
    }
    return m_folder;
}

std::string IoTest::writeFile(const std::string& name, std::string_view text)
{
    const std::filesystem::path path = std::filesystem::path(folder()) / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
    return path.string();
}

SoRef<SoNode> read(std::string_view text)
{
    SoInput in;
    if (!in.setBuffer(text.data(), text.size()))
        return nullptr;
    return SoRef<SoNode>(SoDB::readAll(&in));
}

std::string write(SoNode* node)
{
    SoOutput out;
    out.setBuffer();
    SoWriteAction action(&out);
    action.apply(node);
    return std::string(out.getText());
}

std::string readFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::string zipped(std::string_view text)
{
    SoOutput out;
    out.setCompression(true);
    out.setHeaderString("");
    out.setBuffer();
    out.write(text);
    out.closeFile();
    return std::string(out.getText());
}

} // namespace io
