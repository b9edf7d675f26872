#include "IoSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <cctype>
#include <map>
#include <random>
#include <set>
#include <vector>

namespace {

constexpr const char* kVrml1 = "#VRML V1.0 ascii\n";
constexpr const char* kBinary = "#Kalmyr V1.0 binary\n";

/// Makes scenes with all that readers and writers must not lose. All values differ from the
/// defaults, and all numbers are written as the writer does, so that each word must come back.
class Generator {
public:
    explicit Generator(unsigned seed) : m_random(seed) {}

    std::string vrml97()
    {
        std::string text = io::kVrml97;
        text += "PROTO P [ field SFVec3f at 1 1 1 exposedField MFNode kids [ ] field SFNode owner "
                "NULL ]\n{ DEF I Transform { translation IS at children IS kids } "
                "DEF J Transform { } ROUTE I.scale TO J.scale }\n"
                "PROTO Spare [ ] { Group { } }\n"
                "EXTERNPROTO Far [ field SFFloat a field SFNode b ] [ \"far.wrl#Far\" ]\n";
        for (int n = 1 + pick(3); n > 0; --n)
            text +=
                pick(3) == 0 ? join({"Group { children [ ", kids97(3), "] }\n"}) : node97(3) + "\n";
        std::set<std::string> made;
        for (const std::string& from : m_movers)
            for (const std::string& to : m_transforms)
                if (pick(2) == 0 && from != to)
                    made.insert("ROUTE " + from + " TO " + to + ".translation\n");
        for (const std::string& route : made)
            text += route;
        return text;
    }

    std::string vrml1()
    {
        std::string text = kVrml1;
        for (int n = 1 + pick(3); n > 0; --n)
            text += node1(4) + "\n";
        return text;
    }

private:
    int pick(int n) { return static_cast<int>(m_random() % static_cast<unsigned>(n)); }
    const std::string& one(const std::vector<std::string>& of)
    {
        return of[static_cast<std::size_t>(pick(static_cast<int>(of.size())))];
    }
    /// Quarters from 2 on: no default.
    std::string number()
    {
        char text[32];
        std::snprintf(text, sizeof text, "%g", (pick(2) ? 1 : -1) * (2 + pick(400) / 4.0));
        return std::string(text) + " ";
    }
    /// The parts in order; they are made in that order, which operators do not promise.
    static std::string join(std::initializer_list<std::string> parts)
    {
        std::string text;
        for (const std::string& part : parts)
            text += part;
        return text;
    }
    std::string numbers(int n)
    {
        std::string text;
        while (n-- > 0)
            text += number();
        return text;
    }
    std::string points() { return "[ " + numbers(3 * (3 + pick(6))) + "] "; }

    /// "DEF name " of a node that is open until close().
    std::string open(bool always = false)
    {
        const bool isNamed = always || pick(2) == 0;
        m_open.push_back(isNamed ? "N" + std::to_string(m_next++) : "");
        return isNamed ? "DEF " + m_open.back() + " " : "";
    }
    std::string close(std::vector<std::string>* names)
    {
        if (!m_open.back().empty() && names)
            names->push_back(m_open.back());
        m_open.pop_back();
        return "} ";
    }
    /// A node that holds this place.
    std::string holder()
    {
        std::vector<std::string> named;
        std::copy_if(m_open.begin(), m_open.end(), std::back_inserter(named),
                     [](const std::string& name) { return !name.empty(); });
        return named.empty() ? "" : "USE " + one(named) + " ";
    }
    std::string holderOrNull()
    {
        const std::string text = holder();
        return text.empty() ? "NULL " : text;
    }
    /// A node of one of the families, new or used again.
    std::string useOr(std::vector<std::string>& known, const std::string& body)
    {
        if (!known.empty() && pick(2) == 0)
            return "USE " + one(known) + " ";
        return join({open(), body, close(&known)});
    }

    std::string kids97(int depth)
    {
        std::string text;
        for (int n = 1 + pick(3); n > 0; --n)
            text += node97(depth);
        return text;
    }
    std::string node97(int depth)
    {
        if (!m_children.empty() && pick(6) == 0)
            return "USE " + one(m_children) + " ";
        if (depth == 0 || pick(3) == 0)
            return shape97();
        const std::string def = open(true);
        const std::string name = m_open.back();
        std::string body;
        switch (pick(6)) {
        case 0:
            m_movers.push_back(name + ".moved");
            body = script97();
            break;
        case 1:
            body = join({"P { at ", numbers(3), "owner ", holderOrNull(), "kids [ ",
                         kids97(depth - 1), "] "});
            break;
        case 2:
            body = join({"Wobble { speed 3 label \"a } b\" owner ", holderOrNull(), "parts [ ",
                         holder(), node97(depth - 1), "] "});
            break;
        case 3:
            m_movers.push_back(name + ".value_changed");
            body = join({"PositionInterpolator { key [ 0.25 0.5 ] keyValue [ ", numbers(6), "] "});
            break;
        case 4:
            body = join({"Switch { whichChoice 7 choice [ ", kids97(depth - 1), "] "});
            break;
        default:
            m_transforms.push_back(name);
            body = join(
                {"Transform { translation ", numbers(3), "children [ ", kids97(depth - 1), "] "});
        }
        return join({def, body, close(&m_children)});
    }
    std::string shape97()
    {
        std::string text = open() + "Shape { ";
        if (pick(3) == 0) // what later versions of the language have
            text += "metadata " + useOr(m_geometries, "Box { size 3 4 5 ");
        if (pick(3) == 0)
            text += join({"extras [ ", useOr(m_looks, "Appearance { shade 0xFF edge \"b\" "),
                          useOr(m_geometries, "Cone { height 7 "), "] weights [ 1.50 2 ] "});
        text += "appearance " + useOr(m_looks, "Appearance { material Material { shininess 0.5 } ");
        text += "geometry ";
        text += useOr(m_geometries, join({"IndexedFaceSet { coord Coordinate { point ", points(),
                                          "} coordIndex [ 0 1 2 -1 ] "}));
        return text + close(&m_children);
    }
    std::string script97()
    {
        return join({"Script { url \"javascript: function go(v) { out = \\\"a\\\\n\\\" + v; } # "
                     "no remark\" directOutput TRUE field SFNode self ",
                     holderOrNull(), "field MFNode others [ ", holder(), node97(0), holder(),
                     "] eventIn SFTime go eventOut SFVec3f moved field SFFloat speed ", number()});
    }

    std::string node1(int depth)
    {
        if (!m_children.empty() && pick(6) == 0)
            return "USE " + one(m_children) + " ";
        const std::string def = open();
        std::string body;
        switch (depth == 0 ? pick(4) : pick(8)) {
        case 0:
            body = "Coordinate3 { point " + points();
            break;
        case 1:
            body = "Info { string \"a \\\"text\\\" }\" ";
            break;
        case 2:
            body =
                join({"Crate { fields [ SFFloat width, SFNode lid, MFString isA ] width ", number(),
                      "lid ", useOr(m_looks, "Cube { depth 9 "), "isA [ \"Chest\" \"Cube\" ] "});
            break;
        case 3:
            body = join(
                {"Cube { width 7 part ", useOr(m_looks, "Sphere { radius 3 "), "unheard 0xFF 7 "});
            break;
        case 4:
            body = join({"Bag { size 3 owner \"b\" ", node1(0), node1(0)});
            break;
        default:
            body = pick(2) ? "Separator { " : "TransformSeparator { ";
            for (int n = pick(5); n > 0; --n)
                body += node1(depth - 1);
        }
        return join({def, body, close(&m_children)});
    }

    std::minstd_rand m_random;
    std::vector<std::string> m_open; ///< names of the nodes that the text stands in, or none
    std::vector<std::string> m_children, m_looks, m_geometries; ///< nodes that may be used
    std::vector<std::string> m_transforms, m_movers;            ///< ends of routes
    int m_next = 0;
};

/// How often each word, number and string stands in a text.
std::map<std::string, int> wordsOf(std::string_view text)
{
    std::map<std::string, int> words;
    const std::string_view blanks = " \t\r\n,{}[]";
    for (std::size_t at = text.find('\n'); at < text.size();) {
        const std::size_t begin = at;
        if (text[at] == '"') {
            for (++at; text[at] != '"'; ++at)
                at += text[at] == '\\';
            ++at;
        } else if (blanks.find(text[at]) != blanks.npos) {
            ++at;
            continue;
        } else {
            at = std::min(text.find_first_of(blanks, at), text.size());
        }
        ++words[std::string(text.substr(begin, at - begin))];
    }
    return words;
}

/// The words that one text has more often than the other.
std::string difference(std::string_view text, std::string_view wanted)
{
    auto words = wordsOf(text);
    for (const auto& [word, count] : wordsOf(wanted))
        words[word] -= count;
    std::string all;
    for (const auto& [word, count] : words)
        if (count != 0)
            all += (count > 0 ? " +" : " ") + std::to_string(count) + " " + word;
    return all;
}

/// The nodes of a file side by side, as a program that converts files holds them.
template <class Root>
SoRef<SoNode> readSideBySide(const std::string& text)
{
    SoInput in;
    SoRef<Root> root(new Root);
    SoNode* node = nullptr;
    EXPECT_TRUE(in.setBuffer(text.data(), text.size()));
    do {
        EXPECT_TRUE(SoDB::read(&in, node)) << text;
        if (node)
            root->addChild(node);
    } while (node);
    SoDB::keepUnusedPrototypes(&in, root.get());
    return root;
}

std::string writtenAs(SoNode* root, std::string header)
{
    header.pop_back();
    SoOutput out;
    out.setHeaderString(header.c_str());
    out.setBinary(header.ends_with("binary"));
    out.setBuffer();
    SoWriteAction action(&out);
    action.setRootWritten(false);
    action.apply(root);
    return std::string(out.getText());
}

template <class Root>
void expectNothingLost(const std::string& text, const char* header)
{
    const SoRef<SoNode> scene = readSideBySide<Root>(text);
    const std::string once = writtenAs(scene.get(), header);
    EXPECT_EQ(difference(once, text), "") << text << once;
    EXPECT_EQ(writtenAs(readSideBySide<Root>(once).get(), header), once);
    EXPECT_EQ(writtenAs(SoRef<SoNode>(scene->copy()).get(), header), once) << text;
    for (const char* other : {io::kAscii, kBinary}) {
        const std::string own = writtenAs(scene.get(), other);
        const SoRef<SoNode> again = readSideBySide<Root>(own);
        EXPECT_EQ(writtenAs(again.get(), other), own);
        EXPECT_EQ(difference(writtenAs(again.get(), header), text), "") << text;
    }
}

using GeneratedTest = io::IoTest;
constexpr unsigned kNumFiles = 200; // of each format

} // namespace

TEST_F(GeneratedTest, Vrml97LosesNothing)
{
    auto warnings = support::expectErrors();
    for (unsigned seed = 1; seed <= kNumFiles && !HasFailure(); ++seed)
        expectNothingLost<SoVRMLGroup>(Generator(seed).vrml97(), io::kVrml97);
}

TEST_F(GeneratedTest, Vrml1LosesNothing)
{
    auto warnings = support::expectErrors();
    for (unsigned seed = 1; seed <= kNumFiles && !HasFailure(); ++seed)
        expectNothingLost<SoSeparator>(Generator(seed).vrml1(), kVrml1);
}
