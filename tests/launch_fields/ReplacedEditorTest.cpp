#include "EditorTool.h"

#include <kalmyr/shapes/SoSphere.h>

#include <QSlider>

namespace {

/// A plug-in from outside edits single numbers in the place of the tool's own editor.
class ReplacedEditorTest : public EditorTool {
protected:
    void SetUp() override
    {
        qputenv("KMR_MIRABO_CONFIGURATION_FILE",
                MIRABO_SOURCE_DIR "/examples/extension_editor/MrbConfiguration.xml");
        EditorTool::SetUp();
        scene->addChild(sphere);
        start();
    }
    void TearDown() override
    {
        EditorTool::TearDown();
        qunsetenv("KMR_MIRABO_CONFIGURATION_FILE");
    }

    SoSphere* sphere = new SoSphere;
};

TEST_F(ReplacedEditorTest, MakesADragOneCommand)
{
    choose(sphere->radius);
    auto* slider = control<QSlider>();
    ASSERT_TRUE(slider);
    EXPECT_EQ(slider->value(), slider->maximum() / 2);
    slider->setSliderDown(true);
    for (const int position : {600, 700, 800})
        slider->setValue(position);
    slider->setSliderDown(false);
    EXPECT_FLOAT_EQ(sphere->radius.getValue(), 1.6F);
    undo();
    EXPECT_EQ(sphere->radius.getValue(), 1);
    EXPECT_TRUE(sphere->radius.isDefault());
    EXPECT_FALSE(canUndo());
    ASSERT_TRUE(support::passUntil([&] { return slider->value() == slider->maximum() / 2; }));
}

/// The editors of a profile end while their widgets are shown.
TEST_F(ReplacedEditorTest, GivesThePlaceBackWithItsProfile)
{
    choose(sphere->radius);
    const QPointer<QSlider> slider = control<QSlider>();
    ASSERT_TRUE(slider);
    MrbFieldEditor* editor = MrbFieldEditors::getInstance()->find(SoSFFloat::getClassTypeId());
    ASSERT_EQ(editor->getInfo().name, "Slider");
    const auto reported = support::expectErrors();
    editor->fail("enough");
    support::flush();
    EXPECT_FALSE(slider);
    ASSERT_TRUE(widget()) << "the editor of before";
    EXPECT_EQ(MrbFieldEditors::getInstance()->find(SoSFFloat::getClassTypeId())->getInfo().name,
              "SFFloat");
}

} // namespace
