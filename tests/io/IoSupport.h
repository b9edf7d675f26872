#pragma once

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace io {

/// Starts the toolkit around each test.
class IoTest : public testing::Test {
protected:
    IoTest() { SoDB::init(); }
    ~IoTest() override
    {
        SoInput::clearDirectories();
        std::error_code ignored;
        if (!m_folder.empty())
            std::filesystem::remove_all(m_folder, ignored);
    }

    /// An empty folder of the test's own, removed with it.
    std::string folder();
    std::string writeFile(const std::string& name, std::string_view text);

private:
    std::string m_folder;
};

constexpr const char* kAscii = "#Kalmyr V1.0 ascii\n";
constexpr const char* kVrml97 = "#VRML V2.0 utf8\n";

/// The scene in a text, or null.
SoRef<SoNode> read(std::string_view text);
/// What the write action makes of a graph.
std::string write(SoNode* node);
std::string readFile(const std::string& path);
/// As gzip writes it.
std::string zipped(std::string_view text);

} // namespace io
