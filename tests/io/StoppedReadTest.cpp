#include "IoSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/engines/SoGlobalField.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <functional>
#include <thread>
#include <vector>

namespace {

/// Tells how many of its kind there are.
class VRMLCounted : public SoNode {
    SO_NODE_HEADER(VRMLCounted)

public:
    VRMLCounted();
    static void initClass() { SO_NODE_INIT_CLASS(VRMLCounted, SoNode, "VRMLCounted"); }
    static inline int s_alive = 0;

    SoMFFloat values;
    SoMFString words;
    SoSFImage image;
    SoSFFloat factor;

private:
    ~VRMLCounted() override { --s_alive; }
};

SO_NODE_SOURCE(VRMLCounted)

VRMLCounted::VRMLCounted()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(values, (0));
    SO_ADD_FIELD(words, (""));
    SO_ADD_FIELD(image, (SbImage()));
    SO_ADD_FIELD(factor, (0));
    ++s_alive;
}

class StoppedReadTest : public io::IoTest {
protected:
    StoppedReadTest()
    {
        if (VRMLCounted::getClassTypeId().isBad())
            VRMLCounted::initClass();
    }
};

/// Stops itself at a call of progress(), counting from 0; never for a negative one.
class StoppingInput final : public SoInput {
public:
    explicit StoppingInput(int at) : m_at(at) {}
    void progress(std::size_t bytesRead, std::size_t total) override
    {
        EXPECT_LE(bytesRead, total);
        if (calls++ == m_at)
            stop();
    }
    void warn(const SbString&, int, int, const SbString&) override {}
    bool set(std::string_view text) { return setBuffer(text.data(), text.size()); }

    int calls = 0;

private:
    int m_at;
};

constexpr std::size_t kSize = 2 * SoTokenizer::kProgressStep + 100'000;

/// `part` again and again; each '%' becomes the number of the repetition.
std::string repeated(const std::string& part, std::size_t size = kSize)
{
    std::string all;
    for (int i = 0; all.size() < size; ++i)
        for (const char c : part)
            if (c == '%')
                all += std::to_string(i);
            else
                all += c;
    return all;
}

std::string binaryScene()
{
    const SoRef<SoSeparator> root(new SoSeparator);
    for (int i = 0; i < 6; ++i) {
        auto* node = new VRMLCounted;
        node->values.setNum(int(kSize / 6 / sizeof(float)));
        node->setName(SbName("N" + std::to_string(i)));
        root->addChild(node);
    }
    SoOutput out;
    out.setBinary(true);
    out.setBuffer();
    SoWriteAction(&out).apply(root.get());
    out.closeFile();
    return std::string(out.getText());
}

struct Sample {
    const char* name;
    std::function<std::string()> text;
};

/// Texts that keep each part of the readers busy for long.
std::vector<Sample> samples()
{
    const std::string vrml1 = "#VRML V1.0 ascii\n", vrml97 = io::kVrml97, kalmyr = io::kAscii;
    return {
        {"numbers",
         [=] {
             return kalmyr
                    + "ENGINE E ElapsedTime { } GLOBAL SFFloat stopSpeed 3\n"
                      "DEF N0 VRMLCounted { } ROUTE global.stopSpeed TO N0.factor\n"
                      "ROUTE E.timeOut TO N0.factor Group { USE N0 VRMLCounted { values ["
                    + repeated(" 1.5 -2e3,") + "] } }";
         }},
        {"packed numbers",
         [=] {
             return io::zipped(kalmyr + "DEF N0 VRMLCounted { values [" + repeated(" 1.5 -2e3,")
                               + "] }");
         }},
        {"nodes", [=] { return kalmyr + repeated("DEF N% VRMLCounted { factor % } USE N%\n"); }},
        {"strings",
         [=] {
             return vrml97 + "DEF N0 Counted { words [" + repeated("\"one line %\"\n") + "] }";
         }},
        {"pixels",
         [=] {
             return kalmyr + "DEF N0 VRMLCounted { image 1000 500 1"
                    + repeated(" 0xff", 5 * 1000 * 500) + " }";
         }},
        {"nodes of VRML 1.0",
         [=] {
             return vrml1 + "Separator {" + repeated("DEF N% VRMLCounted { factor % }\n") + "}";
         }},
        {"unknown node of VRML 1.0",
         [=] { return vrml1 + "Strange {" + repeated("DEF N% VRMLCounted { }\n") + "}"; }},
        {"unknown node of VRML97",
         [=] {
             return vrml97 + "Strange { parts [" + repeated("DEF N% Counted { factor % }\n")
                    + "] }";
         }},
        {"unknown lists",
         [=] {
             return vrml97 + "DEF N0 Counted { few [" + repeated("(1) ") + "] many"
                    + repeated(" 1 0x2") + " }";
         }},
        {"large prototype",
         [=] {
             return vrml97 + "PROTO P [ ] { Group { children ["
                    + repeated("DEF N% Counted { factor % }\n") + "] } }\nDEF N0 P { }";
         }},
        {"instances",
         [=] {
             return vrml97 + "PROTO P [ ] { Group { children Counted { } } }\nGroup { children ["
                    + repeated("DEF N% P { }\n", 40000) + "] }";
         }},
        {"routes",
         [=] {
             return vrml97 + repeated("ROUTE N0.translation TO N1.translation\n", 500000)
                    + "DEF N0 Transform { children DEF N1 Transform { } } Counted { }";
         }},
        {"binary", binaryScene},
    };
}

} // namespace

TEST_F(StoppedReadTest, LeavesNothingBehindWhereverItStops)
{
    for (const Sample& sample : samples()) {
        SCOPED_TRACE(sample.name);
        const std::string text = sample.text();
        int whole = 0;
        {
            StoppingInput in(-1);
            ASSERT_TRUE(in.set(text));
            const SoRef<SoNode> root(SoDB::readAll(&in));
            ASSERT_TRUE(root);
            EXPECT_GE(in.calls, 4); // about every megabyte, and at the end
            whole = VRMLCounted::s_alive;
            EXPECT_GT(whole, 0);
        }
        SoGlobalField::remove("stopSpeed");
        ASSERT_EQ(VRMLCounted::s_alive, 0);
        for (int at = 0;; ++at) {
            StoppingInput in(at);
            auto errors = support::expectErrors();
            const SoRef<SoNode> root(in.set(text) ? SoDB::readAll(&in) : nullptr);
            if (in.calls <= at) { // all was read before
                EXPECT_TRUE(root);
                EXPECT_EQ(SoGlobalField::remove("stopSpeed"), text.find("GLOBAL") != text.npos);
                errors.mayStayEmpty();
                break;
            }
            EXPECT_FALSE(root);
            EXPECT_TRUE(in.isStopped());
            EXPECT_EQ(VRMLCounted::s_alive, 0) << at;
            EXPECT_FALSE(SoNode::getByName("N0"));
            EXPECT_FALSE(SoGlobalField::find("stopSpeed"));
            EXPECT_EQ(SoDB::readAll(&in), nullptr); // stays so, without another word
            ASSERT_EQ(errors.count(), 1u) << at;
            EXPECT_EQ(errors.texts()[0], "<memory>: error: reading was stopped");
            if (at != 1)
                continue;
            in.closeFile();
            EXPECT_FALSE(in.isStopped());
            ASSERT_TRUE(in.set(text));
            const SoRef<SoNode> again(SoDB::readAll(&in));
            ASSERT_TRUE(again);
            EXPECT_EQ(VRMLCounted::s_alive, whole);
            SoGlobalField::remove("stopSpeed");
        }
    }
}

TEST_F(StoppedReadTest, EndsWithTheFilesThatTheSceneRefersTo)
{
    const std::string counted = repeated("DEF N% VRMLCounted { }\n");
    writeFile("part.ky", io::kAscii + counted);
    writeFile("part.wrl", "#VRML V1.0 ascii\nSeparator {" + counted + "}");
    writeFile("part97.wrl", io::kVrml97 + repeated("DEF N% Counted { }\n"));
    writeFile("packed.wrz", io::zipped(io::kVrml97 + repeated("DEF N% Counted { }\n")));
    writeFile("protos.wrl", io::kVrml97 + repeated("PROTO P% [ ] { Counted { } }\n"));
    writeFile("inner.ky", io::kAscii + std::string("File { name \"part.ky\" }"));
    const std::string mains[] = {
        io::kAscii + std::string("VRMLCounted { } File { name \"part.ky\" } Cube { }"),
        io::kAscii + std::string("File { name \"inner.ky\" } VRMLCounted { }"),
        "#VRML V1.0 ascii\nSeparator { WWWInline { name \"part.wrl\" } VRMLCounted { } }",
        io::kVrml97 + std::string("Counted { } Inline { url \"part97.wrl\" }"),
        io::kVrml97 + std::string("Inline { url [ \"packed.wrz\" \"part97.wrl\" ] } Counted { }"),
        io::kVrml97
            + std::string("PROTO In [ ] { Inline { url \"part97.wrl\" } } In { } Counted { }"),
        io::kVrml97 + std::string("EXTERNPROTO X [ ] [ \"protos.wrl#X\" \"part97.wrl\" ] X { }"),
    };
    for (const std::string& main : mains) {
        SCOPED_TRACE(main);
        const std::string file = writeFile("main.wrl", main);
        int at = 0;
        for (;; ++at) {
            StoppingInput in(at);
            auto errors = support::expectErrors();
            ASSERT_TRUE(in.openFile(file));
            const SoRef<SoNode> root(SoDB::readAll(&in));
            if (root) {
                errors.mayStayEmpty();
                break;
            }
            EXPECT_EQ(VRMLCounted::s_alive, 0) << at;
            ASSERT_EQ(errors.count(), 1u) << at;
            EXPECT_EQ(errors.texts()[0], file + ": error: reading was stopped");
        }
        EXPECT_GE(at, 5); // of the other file, too
    }
}

TEST_F(StoppedReadTest, StopsWhileAFileIsBroughtIn)
{
    const std::string text = io::kAscii + std::string(9 << 20, ' ') + "Cube { }";
    const std::string plain = writeFile("plain.ky", text);
    const std::string packed = writeFile("packed.kyz", io::zipped(text));
    for (const std::string& file : {plain, packed}) {
        StoppingInput in(1); // the second piece
        auto errors = support::expectErrors();
        EXPECT_FALSE(in.openFile(file));
        EXPECT_FALSE(in.isOpen());
        EXPECT_TRUE(in.isStopped());
        EXPECT_EQ(SoDB::readAll(&in), nullptr); // without another word
        ASSERT_EQ(errors.count(), 1u);
        EXPECT_EQ(errors.texts()[0], file + ": error: reading was stopped");
        ASSERT_TRUE(in.openFile(file));
        EXPECT_FALSE(in.isStopped());
        EXPECT_TRUE(SoRef<SoNode>(SoDB::readAll(&in)));
    }
}

TEST_F(StoppedReadTest, IsNotLostWhereverItComes)
{
    const std::string text = io::kAscii + std::string("DEF A VRMLCounted { } VRMLCounted { }");
    auto errors = support::expectErrors();
    SoInput in;
    in.stop(); // nothing is open yet
    EXPECT_FALSE(in.setBuffer(text.data(), text.size()));
    EXPECT_EQ(errors.count(), 1u);
    ASSERT_TRUE(in.setBuffer(text.data(), text.size()));
    SoNode* node = nullptr;
    ASSERT_TRUE(SoDB::read(&in, node));
    const SoRef<SoNode> first(node);
    std::thread([&] { in.stop(); }).join(); // between two nodes
    EXPECT_FALSE(SoDB::read(&in, node));
    EXPECT_EQ(node, nullptr);
    EXPECT_EQ(errors.count(), 2u);
    EXPECT_EQ(SoNode::getByName("A"), first.get());
    EXPECT_EQ(VRMLCounted::s_alive, 1);

    const std::string path = io::kAscii + std::string("Path { head VRMLCounted { } indices [ ] }");
    ASSERT_TRUE(in.setBuffer(path.data(), path.size()));
    in.stop();
    SoPath* read = nullptr;
    EXPECT_FALSE(SoDB::read(&in, read));
    EXPECT_EQ(errors.count(), 3u);
    EXPECT_EQ(VRMLCounted::s_alive, 1);
    in.closeFile();
    ASSERT_TRUE(in.setBuffer(io::kVrml97, 16)); // one that came too late refuses nothing
    in.stop();
    EXPECT_EQ(SoDB::readAllVRML(&in), nullptr);
    EXPECT_EQ(errors.count(), 4u);
}

TEST_F(StoppedReadTest, EndsAFaultyReadTheSameWay)
{
    auto errors = support::expectErrors();
    const std::string text =
        io::kAscii + std::string("DEF N0 VRMLCounted { } GLOBAL SFFloat stopSpeed 1 Cube { wide }");
    SoInput in;
    ASSERT_TRUE(in.setBuffer(text.data(), text.size()));
    EXPECT_EQ(SoDB::readAll(&in), nullptr);
    EXPECT_EQ(VRMLCounted::s_alive, 0); // although the input is open
    EXPECT_FALSE(SoGlobalField::find("stopSpeed"));
    in.stop();
    EXPECT_EQ(SoDB::readAll(&in), nullptr);
    EXPECT_EQ(errors.count(), 1u);
}
