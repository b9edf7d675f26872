#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/base/SoDynamicLibManager.h>
#include <kalmyr/base/SoPreferences.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

class SbFileHelperTest : public testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = testing::TempDir() + "kalmyr_files_XXXXXX";
        ASSERT_TRUE(mkdtemp(pattern.data()));
        m_folder = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(m_folder.toStdString()); }

    SbString inFolder(const char* name) const { return SbFileHelper::join(m_folder, name); }

    SbString m_folder;
};

} // namespace

TEST_F(SbFileHelperTest, ExpandsVariables)
{
    SoPreferences::setValue("KMR_TEST_HOME", "/opt/k");
    SoPreferences::setValue("KMR_TEST_NESTED", "$KMR_TEST_HOME");
    EXPECT_EQ(SbFileHelper::expandString("$KMR_TEST_HOME/data"), "/opt/k/data");
    EXPECT_EQ(SbFileHelper::expandString("a${KMR_TEST_HOME}b$KMR_TEST_HOME.x"), "a/opt/kb/opt/k.x");
    EXPECT_EQ(SbFileHelper::expandString("$KMR_TEST_NESTED"), "$KMR_TEST_HOME");
    for (const char* text : {"$KMR_TEST_UNKNOWN/x", "${KMR_TEST_UNKNOWN}", "${open", "$", "$$",
                             "5$ $1", "a~b", "~user/x", ""})
        EXPECT_EQ(SbFileHelper::expandString(text), text);
    EXPECT_EQ(SbFileHelper::expandString("~/x"), SoPreferences::getString("HOME", "~") + "/x");
    SoPreferences::removeValue("KMR_TEST_HOME");
    SoPreferences::removeValue("KMR_TEST_NESTED");
}

TEST_F(SbFileHelperTest, TakesNamesApart)
{
    const struct {
        const char* path;
        const char* directory;
        const char* base;
        const char* extension;
    } kCases[] = {
        {"/a/b.c/d.wrl.gz", "/a/b.c/", "d.wrl.gz", "gz"},
        {"d", "", "d", ""},
        {"/a.b/d", "/a.b/", "d", ""},
        {"./.hidden", "./", ".hidden", ""},
        {"a.", "", "a.", ""},
        {"/", "/", "", ""},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(SbFileHelper::getDirName(c.path), c.directory);
        EXPECT_EQ(SbFileHelper::getBaseName(c.path), c.base);
        EXPECT_EQ(SbFileHelper::getExtension(c.path), c.extension);
        EXPECT_EQ(SbFileHelper::getDirName(c.path) + SbFileHelper::getBaseName(c.path), c.path);
    }
    EXPECT_EQ(SbFileHelper::join("a", "b"), "a/b");
    EXPECT_EQ(SbFileHelper::join("a/", "b"), "a/b");
    EXPECT_EQ(SbFileHelper::join("", "b"), "b");
    EXPECT_EQ(SbFileHelper::join("a", "/b"), "/b");
    EXPECT_TRUE(SbFileHelper::toAbsolute("x/../y").endsWith("/y"));
    EXPECT_TRUE(SbFileHelper::isAbsolute(SbFileHelper::toAbsolute("x")));
}

TEST_F(SbFileHelperTest, WritesAndReadsWholeFiles)
{
    std::string bytes;
    for (int i = 0; i < 300000; ++i)
        bytes += static_cast<char>(i * i);
    for (const std::string& content : {bytes, std::string()}) {
        const SbString path = inFolder("\xC3\xA4 file");
        ASSERT_TRUE(SbFileHelper::writeFile(path, content));
        std::vector<char> read;
        ASSERT_TRUE(SbFileHelper::readFile(path, read));
        EXPECT_TRUE(std::string(read.begin(), read.end()) == content);
        SbFileMapping mapping;
        ASSERT_TRUE(mapping.open(path));
        EXPECT_TRUE(mapping.view() == content);
        SbFileMapping moved = std::move(mapping);
        EXPECT_TRUE(moved.view() == content && !mapping.isOpen() && mapping.size() == 0);
    }
    std::size_t entries = 0;
    for ([[maybe_unused]] const auto& entry :
         std::filesystem::directory_iterator(m_folder.toStdString()))
        ++entries;
    EXPECT_EQ(entries, 1u);
}

TEST_F(SbFileHelperTest, WritingKeepsLinksAndPermissions)
{
    const SbString file = inFolder("file"), link = inFolder("link");
    ASSERT_TRUE(SbFileHelper::writeFile(file, "old"));
    chmod(file.getString(), 0640);
    std::filesystem::create_symlink("file", link.toStdString());
    ASSERT_TRUE(SbFileHelper::writeFile(link, "new"));
    EXPECT_TRUE(std::filesystem::is_symlink(link.toStdString()));
    SbFileMapping mapping;
    ASSERT_TRUE(mapping.open(file));
    EXPECT_EQ(mapping.view(), "new");
    struct stat info {};
    stat(file.getString(), &info);
    EXPECT_EQ(info.st_mode & 0777, 0640u);
    EXPECT_TRUE(SbFileHelper::writeFile("/dev/null", "away"));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(SbFileHelperTest, FailuresComeWithAReason)
{
    SbString error;
    std::vector<char> bytes{'x'};
    EXPECT_FALSE(SbFileHelper::readFile(inFolder("none"), bytes, &error));
    EXPECT_EQ(error, "No such file or directory");
    EXPECT_TRUE(bytes.empty());
    SbFileMapping mapping;
    EXPECT_FALSE(mapping.open(m_folder, &error));
    EXPECT_EQ(error, "Is a directory");
    EXPECT_FALSE(SbFileHelper::writeFile(inFolder("no/such/folder"), "x", &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(SbFileHelper::isAccessible(inFolder("none"), SbFileHelper::EXISTS));
    EXPECT_TRUE(SbFileHelper::isAccessible(m_folder, 4));
}

TEST_F(SbFileHelperTest, MappingReadsPipes)
{
    const SbString pipe = inFolder("pipe");
    ASSERT_EQ(mkfifo(pipe.getString(), 0600), 0);
    if (fork() == 0) {
        std::FILE* out = std::fopen(pipe.getString(), "w");
        std::fputs("through the pipe", out);
        std::fclose(out);
        _exit(0);
    }
    SbFileMapping mapping;
    ASSERT_TRUE(mapping.open(pipe));
    EXPECT_EQ(mapping.view(), "through the pipe");
}

TEST(SoDynamicLibManager, FindsLibrariesAndTheirSymbols)
{
    const SbString base = SoDynamicLibManager::getLibraryFromSymbol(&SoPreferences::getValue);
    EXPECT_TRUE(SbFileHelper::getBaseName(base).startsWith("libKalmyrBase.so")) << base;
    EXPECT_TRUE(SbFileHelper::isAbsolute(base)) << base;
    static const int s_here = 0;
    EXPECT_TRUE(SoDynamicLibManager::getLibraryFromSymbol(&s_here).endsWith("/test_base"));

    SbString error;
    const auto library = SoDynamicLibManager::open(base, &error);
    ASSERT_TRUE(library) << error;
    EXPECT_TRUE(
        SoDynamicLibManager::symbol(library, "_ZN13SoPreferences11removeValueERK8SbString"));
    EXPECT_FALSE(SoDynamicLibManager::symbol(library, "kalmyr_no_such_symbol", &error));
    EXPECT_TRUE(error.contains("kalmyr_no_such_symbol"));
    EXPECT_TRUE(SoDynamicLibManager::close(library));
    EXPECT_FALSE(SoDynamicLibManager::open("/no/such/library.so", &error));
    EXPECT_TRUE(error.contains("library.so"));
    EXPECT_FALSE(SoDynamicLibManager::open(""));
    EXPECT_FALSE(SoDynamicLibManager::symbol(nullptr, "malloc"));
    EXPECT_FALSE(SoDynamicLibManager::close(nullptr));
}
