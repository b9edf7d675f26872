// Scripts, fonts and details of texts. The only fonts that must be there are those of DejaVu.
#include "NodesSupport.h"

#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/details/SoTextDetail.h>
#include <kalmyr/io/SoInput.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace {

class TextTest : public nodetest::NodesTest {
protected:
    static SoRef<SoSeparator> scene(const std::string& shape, const std::string& font = "Sans")
    {
        const std::string text = "#Kalmyr V1.0 ascii\nSeparator { Font { name \"DejaVu " + font
                                 + "\" size 1 } " + shape + " }";
        SoInput in;
        in.setBuffer(text.data(), text.size());
        return SoRef<SoSeparator>(SoDB::readAll(&in));
    }
    static SoRef<SoGeometry> built(const std::string& string, const std::string& font = "Sans")
    {
        return nodetest::geometryOf(scene("AsciiText { string \"" + string + "\" }", font).get());
    }
    static float widthOf(const std::string& string) { return built(string)->getBox().getSize()[0]; }
    /// The characters of the lines, from left to right, as picks tell them.
    static std::vector<std::vector<int>> charactersOf(const std::string& shape)
    {
        const auto root = scene(shape);
        const SbBox3f box = nodetest::geometryOf(root.get())->getBox();
        std::map<std::pair<int, int>, std::pair<float, int>> sums;
        SoRayPickAction pick{SbViewportRegion()};
        constexpr int kSteps = 160;
        for (int i = 0; i < kSteps * kSteps; ++i) {
            const float u = (static_cast<float>(i % kSteps) + 0.5f) / kSteps;
            const float v = (static_cast<float>(i) / kSteps) / kSteps;
            const SbVec3f size = box.getSize();
            const float x = box.getMin()[0] + u * size[0];
            pick.setRay({x, box.getMin()[1] + v * size[1], 5}, {0, 0, -1});
            pick.apply(root.get());
            const SoPickedPoint* point = pick.getPickedPoint();
            if (!point)
                continue;
            EXPECT_TRUE(point->getDetail()->isOfType(SoTextDetail::getClassTypeId()));
            const auto* detail = static_cast<const SoTextDetail*>(point->getDetail());
            auto& sum = sums[{detail->getStringIndex(), detail->getCharacterIndex()}];
            sum.first += x;
            ++sum.second;
        }
        std::map<int, std::vector<std::pair<float, int>>> places;
        for (const auto& [key, sum] : sums) {
            if (sum.second > 3) // a corner may stand out into the next cell
                places[key.first].emplace_back(sum.first / static_cast<float>(sum.second),
                                               key.second);
        }
        std::vector<std::vector<int>> lines;
        for (auto& [line, list] : places) {
            std::sort(list.begin(), list.end());
            lines.emplace_back();
            for (const auto& [x, character] : list)
                lines.back().push_back(character);
        }
        return lines;
    }
    static std::vector<int> orderOf(const std::string& string)
    {
        const auto lines = charactersOf("AsciiText { string \"" + string + "\" }");
        return lines.empty() ? std::vector<int>() : lines[0];
    }
};

using Order = std::vector<int>;

} // namespace

TEST_F(TextTest, RunsInTheDirectionOfItsScripts)
{
    EXPECT_EQ(orderOf("aob"), (Order{0, 1, 2}));
    EXPECT_EQ(orderOf("אבת"), (Order{2, 1, 0}));
    EXPECT_EQ(orderOf("ab אבת cd"), (Order{0, 1, 5, 4, 3, 7, 8}));
    // The first letter decides: numbers and Latin words stand within the Hebrew line.
    EXPECT_EQ(orderOf("אב 12 ab"), (Order{6, 7, 3, 4, 1, 0}));
    EXPECT_EQ(charactersOf("AsciiText { string [ \"ab\", \"אב\", \"d\" ] spacing 2 }"),
              (std::vector<Order>{{0, 1}, {1, 0}, {0}}));
    EXPECT_EQ(charactersOf("Text3 { string [ \"ab\", \"אב\" ] spacing 2 depth 0.3 }"),
              (std::vector<Order>{{0, 1}, {1, 0}}));
    // A style that runs from right to left takes every script along.
    EXPECT_EQ(charactersOf("VRMLText { string \"abאב\" fontStyle VRMLFontStyle { family "
                           "\"DejaVu Sans\" leftToRight FALSE } }"),
              (std::vector<Order>{{3, 2, 1, 0}}));
}

TEST_F(TextTest, JoinsLettersAndPutsMarksOnThem)
{
    // The same with a sign between that keeps the letters apart.
    EXPECT_LT(widthOf("بب"), 0.9f * widthOf("ب\u200cب"));
    const auto composed = built("\u00e9"), combined = built("e\u0301"), plain = built("e");
    EXPECT_EQ(combined->getNumTriangles(), composed->getNumTriangles());
    EXPECT_NEAR(combined->getBox().getMax()[1], composed->getBox().getMax()[1], 1e-3f);
    // No character of its own: the mark stands above, and takes no room.
    const auto marked = built("n\u0302n"), unmarked = built("nn");
    EXPECT_GT(marked->getBox().getMax()[1], unmarked->getBox().getMax()[1] + 0.1f);
    EXPECT_NEAR(marked->getBox().getMax()[0], unmarked->getBox().getMax()[0], 1e-3f);
    EXPECT_GT(marked->getBox().getMin()[0], -0.05f);
    // In a column they share a cell.
    const auto column = [](const std::string& string) {
        return nodetest::geometryOf(scene("VRMLText { string \"" + string
                                          + "\" fontStyle VRMLFontStyle { horizontal FALSE } }")
                                        .get())
            ->getBox()
            .getMin()[1];
    };
    EXPECT_NEAR(column("x\u0302o"), column("xo"), 1e-3f);
    EXPECT_LT(column("xxo"), column("xo") - 0.9f);
}

TEST_F(TextTest, FormsLettersAsTheirLanguageDoes)
{
    const auto shape = [](const std::string& letter, const std::string& language) {
        return nodetest::geometryOf(scene("VRMLText { string \"" + letter
                                          + "\" fontStyle VRMLFontStyle { family \"DejaVu Sans\" "
                                            "language \""
                                          + language + "\" } }")
                                        .get())
            ->positions;
    };
    // Capital eng has the form of a large n in Sami, and that of a capital N elsewhere.
    EXPECT_NE(shape("Ŋ", "se"), shape("Ŋ", "ee"));
    EXPECT_EQ(shape("Ŋ", "ee"), shape("Ŋ", ""));
    EXPECT_NE(shape("б", "sr"), shape("б", "ru"));
}

TEST_F(TextTest, TakesFromOtherFontsWhatOneLacks)
{
    // The serif font has no Hebrew letters.
    const auto one = built("ש", "Serif"), other = built("ק", "Serif");
    ASSERT_TRUE(one && other);
    EXPECT_NE(one->getNumTriangles(), other->getNumTriangles());
    const auto mixed = built("aשb", "Serif");
    EXPECT_EQ(mixed->getNumTriangles(),
              built("ab", "Serif")->getNumTriangles() + one->getNumTriangles());
    // What no font has is a frame, which can be seen.
    const auto frame = built("\U0010fffd");
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->getNumTriangles(), 8u);
    EXPECT_GT(frame->getBox().getSize()[1], 0.5f);
}
