#include "IoSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <vector>

using InputTest = io::IoTest;

TEST_F(InputTest, FindsFilesBesideTheirParentThenInTheDirectories)
{
    writeFile("a/main.ky", "#Kalmyr V1.0 ascii");
    const std::string beside = writeFile("a/part.ky", "#Kalmyr V1.0 ascii");
    const std::string listed = writeFile("b/part.ky", "#Kalmyr V1.0 ascii");
    const std::string other = writeFile("c/other.ky", "#Kalmyr V1.0 ascii");
    SoInput::addDirectoryLast(folder() + "/c");
    SoInput::addDirectoryFirst(folder() + "/b");
    ASSERT_EQ(SoInput::getDirectories().size(), 2u);

    SoInput main;
    ASSERT_TRUE(main.openFile(folder() + "/a/main.ky"));
    EXPECT_EQ(main.findFile("part.ky"), beside);
    EXPECT_EQ(main.findFile("other.ky"), other);
    EXPECT_EQ(main.findFile("missing.ky"), "");
    SoInput part(&main);
    ASSERT_TRUE(part.openFile("part.ky"));
    EXPECT_EQ(part.getCurFileName(), beside);
    EXPECT_TRUE(part.isReading(folder() + "/a/../a/main.ky"));

    SoInput alone;
    ASSERT_TRUE(alone.openFile("part.ky"));
    EXPECT_EQ(alone.getCurFileName(), listed);
    SoInput::removeDirectory(folder() + "/b");
    EXPECT_FALSE(alone.openFile("part.ky", true)); // may be missing: no error
    EXPECT_FALSE(alone.isOpen());
}

TEST_F(InputTest, TellsOfWhatIsLeftOutInTheFilesThatASceneRefersTo)
{
    class Noting final : public SoInput {
    public:
        void warn(const SbString& fileName, int line, int column, const SbString&) override
        {
            notes.push_back(fileName.toStdString() + ':' + std::to_string(line) + ':'
                            + std::to_string(column));
        }
        std::vector<std::string> notes;
    };
    SoInput::addInMemoryTextFile("inner.wrl", "#VRML V2.0 utf8\n\n Gizmo { }");
    SoInput::addInMemoryTextFile("outer.wrl",
                                 "#VRML V2.0 utf8\nInline { url \"inner.wrl\" }\n  Plumbus { }");
    SoInput::addInMemoryTextFile("kinds.wrl",
                                 "#VRML V2.0 utf8\nPROTO Kind [ ] { Odd { } }\nOdd { }");
    const std::string scene = "#VRML V2.0 utf8\nInline { url \"outer.wrl\" }\n"
                              "EXTERNPROTO Kind [ ] \"kinds.wrl\"\nWhatsit { } Kind { }";
    Noting in;
    ASSERT_TRUE(in.setBuffer(scene.data(), scene.size()));
    const SoRef<SoVRMLGroup> root(SoDB::readAllVRML(&in));
    EXPECT_TRUE(root);
    for (const char* name : {"inner.wrl", "outer.wrl", "kinds.wrl"})
        SoInput::removeInMemoryTextFile(name);
    ASSERT_EQ(in.notes.size(), 4u);
    EXPECT_EQ(in.notes[0], "inner.wrl:3:2");
    EXPECT_EQ(in.notes[1], "outer.wrl:3:3");
    EXPECT_EQ(in.notes[2], ":4:1") << "of memory";
    EXPECT_EQ(in.notes[3].substr(0, 3), ":4:") << "in an instance: where that stands";
}

TEST_F(InputTest, ReadsTextFilesKeptInMemory)
{
    SoInput::addInMemoryTextFile("lib/screw.ky", "#Kalmyr V1.0 ascii\nCube { }");
    SbString text;
    EXPECT_TRUE(SoInput::readTextFile("lib/screw.ky", text));
    EXPECT_TRUE(text.endsWith("Cube { }"));
    SoInput in;
    ASSERT_TRUE(in.openFile("lib/screw.ky"));
    EXPECT_EQ(in.getFormat(), SoInput::KALMYR_ASCII);
    SoInput::removeInMemoryTextFile("lib/screw.ky");
    EXPECT_FALSE(SoInput::readTextFile("lib/screw.ky", text));
    EXPECT_TRUE(SoInput::readTextFile(writeFile("note.txt", "on disk"), text));
    EXPECT_EQ(text, "on disk");
}

TEST_F(InputTest, KnowsHeaders)
{
    const auto headerOf = [](std::string_view text) {
        SoInput in;
        EXPECT_TRUE(in.setBuffer(text.data(), text.size()));
        return std::pair(in.getHeader().toStdString(), in.getFormat());
    };
    using Pair = std::pair<std::string, SoInput::Format>;
    EXPECT_EQ(headerOf("#VRML V2.0 utf8 by hand\r\nGroup { }"),
              Pair("#VRML V2.0 utf8", SoInput::VRML2));
    EXPECT_EQ(headerOf("\xef\xbb\xbf#VRML V1.0 ascii\n"), Pair("#VRML V1.0 ascii", SoInput::VRML1));
    EXPECT_EQ(headerOf("#Kalmyr V1.0 binary"), Pair("#Kalmyr V1.0 binary", SoInput::KALMYR_BINARY));
    EXPECT_EQ(headerOf("#VRML V2.0 utf8x\n"), Pair("#VRML V2.0 utf8x", SoInput::UNKNOWN_FORMAT));
    EXPECT_EQ(headerOf("Group { }"), Pair("", SoInput::UNKNOWN_FORMAT));
    EXPECT_EQ(SoInput::formatOfHeader("  #Kalmyr V1.0 ascii\n"), SoInput::KALMYR_ASCII);
}

TEST_F(InputTest, InflatesAndRefusesBrokenCompression)
{
    std::string text = io::kAscii;
    for (int i = 0; i < 20000; ++i)
        text += "Cube { width " + std::to_string(i * 7919 % 1000) + " }\n";
    const std::string packed = io::zipped(text);
    ASSERT_LT(packed.size() * 5, text.size());
    const auto inflated = [](const std::string& bytes) {
        SoInput in;
        if (!in.setBuffer(bytes.data(), bytes.size()))
            return std::string("refused");
        EXPECT_TRUE(in.isCompressed());
        return std::string(in.getTokenizer().getText(), in.getSize());
    };
    EXPECT_TRUE(inflated(packed) == text);
    EXPECT_TRUE(inflated(packed + packed) == text + text); // members one after the other
    EXPECT_TRUE(inflated(packed + std::string(512, '\0')) == text);

    auto errors = support::expectErrors();
    for (const std::size_t cut : {packed.size() - 1, packed.size() - 9, packed.size() / 2,
                                  std::size_t(20), std::size_t(3)}) {
        EXPECT_TRUE(inflated(packed.substr(0, cut)) == "refused") << cut;
        EXPECT_TRUE(
            errors.contains("the compressed text is cut short at byte " + std::to_string(cut)))
            << cut;
        errors.clear();
    }
    std::string damaged = packed;
    damaged[packed.size() / 2] ^= 0x55;
    EXPECT_TRUE(inflated(damaged) == "refused");

    // A small file that would fill the memory.
    constexpr std::size_t kBlanks = std::size_t(1) << 24;
    std::string bomb = io::zipped(io::kAscii);
    const std::string blanks = io::zipped(std::string(kBlanks, ' '));
    for (std::size_t size = 0; size <= SoInput::kMinUnpacked; size += kBlanks)
        bomb += blanks;
    errors.clear();
    EXPECT_TRUE(inflated(bomb) == "refused");
    EXPECT_TRUE(errors.contains("the preference KMR_MAX_UNPACK_RATIO allows more"));
    SoPreferences::setInt("KMR_MAX_UNPACK_RATIO", 2000);
    SoInput in;
    EXPECT_TRUE(in.setBuffer(bomb.data(), bomb.size()));
    SoPreferences::removeValue("KMR_MAX_UNPACK_RATIO");
}

TEST_F(InputTest, TellsWherePackedTextBreaksOff)
{
    auto errors = support::expectErrors();
    const auto refused = [&](const std::string& bytes, const std::string& message) {
        errors.clear();
        SoInput in;
        EXPECT_FALSE(in.setBuffer(bytes.data(), bytes.size()));
        EXPECT_TRUE(errors.contains(message)) << message;
    };
    for (const char* header : {io::kAscii, "#VRML V1.0 ascii\n", "#VRML V2.0 utf8\n"}) {
        const std::string packed = io::zipped(header + std::string("A\r\nB\rC {}"));
        const std::string end = " at byte " + std::to_string(packed.size() - 4);
        // All of the text is there before its checksum is.
        refused(packed.substr(0, packed.size() - 8),
                ":4:5: error: the compressed text is cut short");
        std::string odd = packed;
        odd[odd.size() - 5] ^= 1;
        refused(odd, ":4:5: error: the compressed text is damaged: its checksum is wrong" + end);
        odd = packed;
        odd[odd.size() - 1] ^= 1;
        refused(odd, ":4:5: error: the compressed text is damaged: its length");
        odd = packed;
        odd[2] = 7;
        refused(odd, ":1:1: error: what follows is no member of a gzip file");
        refused(packed + odd, ":4:5: error: what follows is no member of a gzip file");
    }
    const std::string binary = io::zipped("#Kalmyr V1.0 binary\n\n\n");
    refused(binary.substr(0, binary.size() - 8), "error: the compressed text is cut short at byte "
                                                     + std::to_string(binary.size() - 8)
                                                     + ", byte 22 when inflated");
}

TEST_F(InputTest, SaysWhatCannotBeOpened)
{
    auto errors = support::expectErrors();
    SoInput in;
    EXPECT_FALSE(in.openFile("/nowhere/scene.ky"));
    EXPECT_TRUE(errors.contains("/nowhere/scene.ky: error: it cannot be opened: "));
    errors.clear();
    EXPECT_FALSE(in.openFile(folder()));
    EXPECT_EQ(errors.count(), 1u);
    EXPECT_EQ(SoDB::readAll(&in), nullptr); // nothing is open
    EXPECT_EQ(errors.count(), 2u);
}

TEST_F(InputTest, ReportsProgressToTheEnd)
{
    class Watch final : public SoInput {
    public:
        std::vector<std::size_t> seen;
        void progress(std::size_t bytesRead, std::size_t total) override
        {
            EXPECT_EQ(total, getSize());
            seen.push_back(bytesRead);
        }
    } in;
    std::string text = std::string(io::kAscii) + "Separator { Coordinate3 { point [";
    while (text.size() < 3500000)
        text += " 1.25 2.5 3.75,";
    text += "] }";
    while (text.size() < 7000000)
        text += "Separator { Cube { } }\n";
    text += "}";
    ASSERT_TRUE(in.setBuffer(text.data(), text.size()));
    const SoRef<SoNode> root(SoDB::readAll(&in));
    ASSERT_TRUE(root);
    ASSERT_GE(in.seen.size(), 6u);
    EXPECT_LE(in.seen.size(), 9u);
    EXPECT_TRUE(std::is_sorted(in.seen.begin(), in.seen.end()));
    EXPECT_EQ(in.seen.back(), text.size());
}

TEST_F(InputTest, KnowsWhereAFaultIsBehindLongLists)
{
    for (const std::string end : {"\n", "\r\n", "\r"}) {
        std::string scene = io::kAscii + ("Separator {" + end) + "Coordinate3 { point [" + end;
        for (int i = 0; i < 200'000; ++i)
            scene += "1 2 3" + end;
        scene += "] }" + end + "  Cube { width x }" + end + "}";
        SoInput in;
        ASSERT_TRUE(in.setBuffer(scene.data(), scene.size()));
        auto errors = support::expectErrors();
        EXPECT_EQ(SoDB::readAll(&in), nullptr);
        EXPECT_TRUE(errors.contains(":200005:16: error: expected a number")) << errors.texts()[0];
    }
}
