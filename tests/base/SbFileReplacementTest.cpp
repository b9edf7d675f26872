#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/base/SbFileReplacement.h>

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

class SbFileReplacementTest : public testing::Test {
protected:
    void SetUp() override
    {
        std::string name = (fs::temp_directory_path() / "replacementXXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        m_folder = name;
    }
    void TearDown() override
    {
        std::error_code ignored;
        fs::permissions(m_folder, fs::perms::owner_all, ignored);
        fs::remove_all(m_folder, ignored);
    }
    std::string at(const std::string& name) const { return (m_folder / name).string(); }
    static std::string textOf(const std::string& path)
    {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    }
    static void write(const std::string& path, const std::string& text)
    {
        std::ofstream(path, std::ios::binary) << text;
    }
    static void put(SbFileReplacement& file, const std::string& text)
    {
        std::fwrite(text.data(), 1, text.size(), file.getFile());
    }
    std::size_t entries() const
    {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(m_folder), fs::directory_iterator()));
    }
    /// What a process of its own returns; below zero the signal that ended it.
    static int inAnotherProcess(const std::function<int()>& work)
    {
        const pid_t child = fork();
        if (child == 0)
            _exit(work());
        int status = 0;
        waitpid(child, &status, 0);
        return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
    }

    fs::path m_folder;
};

} // namespace

TEST_F(SbFileReplacementTest, LeavesAWholeFileWheneverTheProgramIsKilled)
{
    const std::string path = at("scene.ky");
    const std::string block(4096, 'n');
    constexpr int kBlocks = 100;
    std::string before = "old";
    write(path, before);
    for (int moment = 0; moment <= kBlocks + 1; ++moment) {
        const int end = inAnotherProcess([&] {
            SbFileReplacement file;
            if (!file.open(path))
                return 1;
            for (int i = 0; i < kBlocks; ++i) {
                if (i == moment)
                    raise(SIGKILL);
                put(file, block);
                std::fflush(file.getFile());
            }
            if (moment == kBlocks)
                raise(SIGKILL); // all written, nothing committed
            return file.commit() ? (raise(SIGKILL), 0) : 1;
        });
        ASSERT_EQ(end, -SIGKILL) << moment;
        ASSERT_EQ(textOf(path).size(), moment > kBlocks ? block.size() * kBlocks : before.size());
        ASSERT_LE(entries(), 2u) << "what was left behind is removed by the next writer";
    }
    SbFileReplacement file;
    ASSERT_TRUE(file.open(path));
    put(file, "new");
    EXPECT_TRUE(file.commit());
    EXPECT_EQ(textOf(path), "new");
    EXPECT_EQ(entries(), 1u);
}

TEST_F(SbFileReplacementTest, LeavesTheOldFileWhenTheDiskIsFull)
{
    const std::string path = at("scene.ky");
    write(path, "old");
    EXPECT_EQ(inAnotherProcess([&] {
                  std::signal(SIGXFSZ, SIG_IGN);
                  const rlimit limit{10000, 10000};
                  setrlimit(RLIMIT_FSIZE, &limit);
                  SbFileReplacement file;
                  if (!file.open(path))
                      return 1;
                  put(file, std::string(100000, 'n'));
                  SbString reason;
                  return file.commit(&reason) ? 2 : reason == "File too large" ? 0 : 3;
              }),
              0);
    EXPECT_EQ(textOf(path), "old");
    EXPECT_EQ(entries(), 1u);
    SbFileReplacement full;
    ASSERT_TRUE(full.open("/dev/full"));
    put(full, "text");
    SbString reason;
    EXPECT_FALSE(full.commit(&reason));
    EXPECT_EQ(reason, "No space left on device");
}

/// A folder that takes no new file: an old file in it could be lost half way.
TEST_F(SbFileReplacementTest, RefusesWhereNoFileCanBeMadeBesideTheOldOne)
{
    const std::string path = at("scene.ky");
    write(path, "old");
    chmod(path.c_str(), 0666);
    chmod(m_folder.c_str(), 0555);
    EXPECT_EQ(inAnotherProcess([&] {
                  if (geteuid() == 0 && setuid(65534) != 0)
                      return 1;
                  SbFileReplacement file;
                  SbString reason;
                  if (file.open(path, &reason) || reason != "Permission denied")
                      return 2;
                  return SbFileHelper::writeFile(path.c_str(), "new") ? 3 : 0;
              }),
              0);
    EXPECT_EQ(textOf(path), "old");
}

TEST_F(SbFileReplacementTest, SeveralWritersOfOneFileDoNotMix)
{
    const std::string path = at(std::string(255, 'x')); // the longest name there is
    SbFileReplacement first, second, third;
    ASSERT_TRUE(first.open(path));
    ASSERT_TRUE(second.open(path));
    put(first, "first");
    put(second, "second");
    EXPECT_TRUE(first.commit());
    EXPECT_EQ(textOf(path), "first");
    ASSERT_TRUE(third.open(path));
    put(third, "third");
    EXPECT_TRUE(second.commit());
    EXPECT_EQ(textOf(path), "second");
    third.discard();
    EXPECT_FALSE(third.commit());
    EXPECT_EQ(textOf(path), "second");
    EXPECT_EQ(entries(), 1u);
}

TEST_F(SbFileReplacementTest, KeepsLinksModesAndWhatIsNotOurs)
{
    fs::create_symlink("file", at("link"));
    SbFileReplacement file;
    ASSERT_TRUE(file.open(at("link"))); // to a file that is not there yet
    put(file, "one");
    EXPECT_TRUE(file.commit());
    EXPECT_TRUE(fs::is_symlink(at("link")));
    EXPECT_EQ(textOf(at("file")), "one");
    chmod(at("file").c_str(), 0640);
    fs::create_directory(at(".file.saving")); // somebody else's
    ASSERT_TRUE(file.open(at("link")));
    put(file, "two");
    EXPECT_TRUE(file.commit());
    struct stat info {};
    stat(at("file").c_str(), &info);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
    EXPECT_EQ(textOf(at("file")), "two");
    EXPECT_EQ(entries(), 3u);
    SbString reason;
    EXPECT_FALSE(file.open(m_folder.string(), &reason));
    EXPECT_EQ(reason, "Is a directory");
    EXPECT_FALSE(file.open(at("no/such/folder"), &reason));
    EXPECT_EQ(reason, "No such file or directory");
}
