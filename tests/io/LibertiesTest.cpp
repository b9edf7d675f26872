#include "IoSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/vrml/SoVRMLGroup.h>

#include <algorithm>

namespace fs = std::filesystem;

namespace {

/// What a strict reader refuses is read, and told once with its place.
class LibertiesTest : public io::IoTest {};

/// The remarks on a VRML97 text that stands from line 2 on.
std::vector<std::string> remarksOn(const std::string& body)
{
    auto remarks = support::expectErrors();
    remarks.mayStayEmpty();
    EXPECT_TRUE(io::read(io::kVrml97 + body)) << body;
    return remarks.texts();
}

} // namespace

TEST_F(LibertiesTest, AreToldOnceWithTheirPlace)
{
    const struct {
        const char* body;
        const char* remark;
    } liberties[] = {
        {"PROTO P [ exposedField SFFloat a ] { Group { } } P { } P { }", "2:32: 'a' has no value"},
        {"PROTO P [ eventIn SFFloat a 3 ] { Group { } }", "2:29: 'a' can have no value here"},
        {"PROTO P [ ] { }", "2:15: in prototype 'P': the body holds no node"},
        {"PROTO P [ ] { Group { } } PROTO P [ ] { Group { } }", "2:33: prototype 'P' is declared"},
        {"PROTO 3P [ ] { Group { } }", "2:7: '3P' has characters that a name cannot have"},
        {"DEF +x Group { } USE +x", "2:5: '+x' has characters that a name cannot have"},
        {"DEF x.y Group { }", "2:5: 'x.y' has characters"},
        {"Group { children [ Box { } PROTO P [ ] { Group { } } ] }", "2:28: 'PROTO' stands in a"},
        {"LOD { children [ ] } LOD { children [ ] }", "2:7: 'children' of 'LOD' is called 'level'"},
        {"Script { initializeOnly SFBool a TRUE }", "2:10: 'initializeOnly' is a word of later"},
        {"Transform { translation [ 1 2 3 ] }", "2:25: there are brackets around the value"},
        {"ROUTE A.children TO B.children DEF A Group { } DEF B Group { }", "2:1: a route stands"},
        {"WorldInfo { info [ \"a\" b ] }", "2:24: there are no quotes around a string"},
        {"WorldInfo { title \"a\xe4\" }", "2:21: a string has bytes that are no UTF-8"},
        {"Collision { collide true }", "2:21: expected TRUE or FALSE, not 'true'"},
        {"Group { } \x1a", "2:11: the text ends in zero bytes"},
    };
    for (const auto& [body, remark] : liberties) {
        const auto texts = remarksOn(body);
        ASSERT_EQ(texts.size(), 1u) << body << "\n" << (texts.empty() ? "" : texts.back());
        EXPECT_NE(texts[0].find(std::string("<memory>:") + remark), std::string::npos)
            << body << "\n"
            << texts[0];
    }
    for (const char* header : {"#vrml V2.0 utf8\n", "#VRML  V2.0 utf8\n", "\n#VRML V2.0 utf8\n",
                               "\xef\xbb\xbf#VRML V2.0 utf8\n", "#VRML V2.0 UTF-8\n"}) {
        auto remarks = support::expectErrors();
        EXPECT_TRUE(io::read(header + std::string("Group { }")));
        EXPECT_EQ(remarks.count(), 1u);
        EXPECT_TRUE(remarks.contains("<memory>:1:1: expected '#VRML V2.0 utf8'")) << header;
    }
}

TEST_F(LibertiesTest, InBodiesOfPrototypesAreToldWhoeverUsesThem)
{
    // Lines of the file, also where declarations stand in each other, and once for all instances.
    const std::string inner = "PROTO Inner [ ] {\n Shape { geometry Bx { } } }\n";
    const std::string outer = "PROTO Outer [ ] {\n" + inner + " Group { children Inner { } } }\n";
    for (const char* use : {"", "Outer { }", "Outer { } Outer { } Group { children Outer { } }"}) {
        const auto texts = remarksOn(outer + use);
        ASSERT_EQ(texts.size(), 1u) << use;
        EXPECT_NE(texts[0].find("<memory>:4:19: in prototype 'Inner': node type 'Bx' is unknown"),
                  std::string::npos)
            << texts[0];
    }
    // Faults of what nothing uses cost nothing but themselves.
    const auto texts = remarksOn("PROTO A [ ] {\n PROTO B [ field SFInt32 n 1.5 ] { Group { } }\n"
                                 " Group { children 7 } }\nPROTO C [ ] { A { } }");
    ASSERT_EQ(texts.size(), 2u);
    EXPECT_NE(texts[0].find("<memory>:4:19: in prototype 'A': expected a node"), std::string::npos)
        << texts[0];
    EXPECT_NE(texts[1].find("<memory>:3:28: in prototype 'B': expected a whole number"),
              std::string::npos)
        << texts[1];
    // Neither are other files read for them, nor is anything expanded.
    std::string bomb = "PROTO P0 [ ] { Inline { url \"none.wrl\" } }\n";
    for (int i = 1; i < 40; ++i) {
        const std::string below = "P" + std::to_string(i - 1) + " { } ";
        bomb += "PROTO P" + std::to_string(i) + " [ ] { Group { children [ " + below + below
                + "] } }\n";
    }
    EXPECT_TRUE(remarksOn(bomb).empty());
}

TEST_F(LibertiesTest, StrictFilesGiveNoRemarks)
{
    constexpr const char* kStrict[] = {"001_", "002_", "005_", "008_", "024_", "025_"};
    int files = 0;
    for (const auto& entry :
         fs::directory_iterator(fs::path(MIRABO_TEST_DATA_DIR) / "formats" / "vrml97")) {
        const std::string name = entry.path().filename().string();
        const bool isStrict =
            std::any_of(std::begin(kStrict), std::end(kStrict),
                        [&name](const char* number) { return name.starts_with(number); });
        if (!isStrict)
            continue;
        ++files;
        SoInput in;
        ASSERT_TRUE(in.openFile(entry.path().string()));
        EXPECT_TRUE(SoRef<SoVRMLGroup>(SoDB::readAllVRML(&in))) << name;
    }
    EXPECT_EQ(files, 6);
}
