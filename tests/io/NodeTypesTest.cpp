#include "IoSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoToVRMLAction.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodes/SoSeparator.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>

namespace fs = std::filesystem;

namespace {

using NodeTypesTest = io::IoTest;

struct Format {
    const char* title;
    const char* header;
    bool binary;
};
constexpr Format kFormats[] = {{"Kalmyr ascii", "#Kalmyr V1.0 ascii", false},
                               {"Kalmyr binary", "#Kalmyr V1.0 binary", true},
                               {"VRML 1.0", "#VRML V1.0 ascii", false},
                               {"VRML97", "#VRML V2.0 utf8", false}};

/// Values that differ from what fields begin with.
const std::map<std::string, const char*>& samples()
{
    static const std::map<std::string, const char*> values{
        {"SFBool", nullptr}, // the opposite
        {"SFFloat", "0.375"},
        {"SFDouble", "0.375"},
        {"SFInt32", "3"},
        {"SFTime", "4.5"},
        {"SFString", "\"a \\\"b\\\" \xc3\xa9\""},
        {"SFName", "Name"},
        {"SFColor", "0.25 0.5 0.75"},
        {"SFVec2f", "0.25 -3"},
        {"SFVec3f", "0.25 -3 7"},
        {"SFRotation", "0 1 0 0.5"},
        {"SFMatrix", "1 2 3 0 0 1 0 0 0 0 1 0 4 5 6 1"},
        {"SFImage", "1 2 3 0xFF0000 0x00FF00"},
        {"MFFloat", "[ 0.25, -1 ]"},
        {"MFInt32", "[ 0, 1, 2, -1 ]"},
        {"MFUInt32", "[ 0xFF00FF80, 1 ]"},
        {"MFString", "[ \"a\", \"b\\\\c\" ]"},
        {"MFColor", "[ 1 0 0, 0 0.5 0 ]"},
        {"MFColorRGBA", "[ 1 0 0 0.5, 0 0.5 0 1 ]"},
        {"MFVec2f", "[ 1 2, 3 4 ]"},
        {"MFVec3f", "[ 1 2 3, 4 5 6, 7 8 9 ]"},
        {"MFVec4f", "[ 1 2 3 1, 4 5 6 1 ]"},
        {"MFRotation", "[ 0 1 0 0.5, 1 0 0 1 ]"},
        {"MFTime", "[ 1, 2.5 ]"},
        {"SFPlane", "0 1 0 2"},
    };
    return values;
}

void fill(SoNode* node)
{
    for (SoField* field : node->getFields()) {
        const SoField::FieldType kind = field->getFieldType();
        const auto sample = samples().find(field->getTypeId().getName().getString());
        if (kind == SoField::EVENT_IN || kind == SoField::EVENT_OUT || sample == samples().end())
            continue;
        SbString now;
        field->get(now);
        field->set(sample->second ? sample->second : now == "TRUE" ? "FALSE" : "TRUE");
    }
}

std::string written(SoNode* node, const Format& format)
{
    SoOutput out;
    out.setBinary(format.binary);
    out.setHeaderString(format.header);
    out.setBuffer();
    SoWriteAction(&out).apply(node);
    return std::string(out.getText());
}

bool has(const Format& format, SoType type)
{
    const std::string name = type.getName().getString();
    if (format.title == std::string_view("VRML 1.0"))
        return SoToVRMLAction::isVrml1Type(type);
    return format.title != std::string_view("VRML97") || name.starts_with("VRML");
}

/// "yes" when the node comes back with all its values from what was written, "-" when the format
/// has no such node.
std::string result(SoType type, const Format& format)
{
    if (!has(format, type))
        return "-";
    const SoRef<SoSeparator> holder(new SoSeparator);
    SoRef<SoNode> node(SoNode::create(type));
    fill(node.get());
    node->setName(SbName("It"));
    holder->addChild(node.get());
    node = nullptr;
    const std::string once = written(holder->getChild(0), format);
    holder->removeChild(0);
    SoInput in;
    in.setBuffer(once.data(), once.size());
    SoNode* back = nullptr;
    if (!SoDB::read(&in, back) || !back)
        return "no (reading)";
    const SoRef<SoNode> held(back);
    if (back->getTypeId() != type)
        return "no (type)";
    return written(back, format) == once ? "yes" : "no (values)";
}

std::string table()
{
    std::vector<SoType> types;
    for (const SoType& type : SoType::getAllDerivedFrom(SoNode::getClassTypeId()))
        // These stand for nodes of other names.
        if (type.canCreateInstance() && type.getName() != "UnknownNode"
            && type.getName() != "VRMLProtoInstance")
            types.push_back(type);
    std::sort(types.begin(), types.end(), [](const SoType& a, const SoType& b) {
        return a.getName().view() < b.getName().view();
    });
    std::string text = "| node type |", line = "|---|";
    for (const Format& format : kFormats) {
        text += std::string(" ") + format.title + " |";
        line += "---|";
    }
    text += "\n" + line + "\n";
    for (const SoType& type : types) {
        text += "| " + std::string(type.getName().view()) + " |";
        for (const Format& format : kFormats)
            text += " " + result(type, format) + " |";
        text += "\n";
    }
    return text;
}

} // namespace

/// The page is what this test found when it was last run with KMR_WRITE_TABLES set.
TEST_F(NodeTypesTest, ComeBackAsThePageSays)
{
    auto remarks = support::expectErrors(); // pictures that do not exist, and such
    remarks.mayStayEmpty();
    const fs::path page = fs::path(MIRABO_TEST_DATA_DIR) / "../../docs/formats/node-types.md";
    const std::string found = table();
    EXPECT_EQ(found.find(" no "), std::string::npos) << found;
    const std::string before = io::readFile(page.string());
    const std::size_t at = before.find("| node type |");
    if (std::getenv("KMR_WRITE_TABLES"))
        std::ofstream(page) << before.substr(0, at) << found;
    else
        EXPECT_EQ(before.substr(std::min(at, before.size())), found);
}
