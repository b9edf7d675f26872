#include "EditorTool.h"

#include <kalmyr/engines/SoElapsedTime.h>
#include <kalmyr/nodes/SoInfo.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/sensors/SoFieldSensor.h>
#include <kalmyr/shapes/SoCone.h>
#include <kalmyr/shapes/SoSphere.h>

#include <QCheckBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QToolButton>

#include <utility>

namespace {

/// The dock "Field Editor" around the editors.
class FieldEditorTest : public EditorTool {
protected:
    void SetUp() override
    {
        EditorTool::SetUp();
        scene->addChild(sphere);
        scene->addChild(info);
        start();
    }
    static QToolButton* button(const QString& text)
    {
        for (auto* button : panel()->findChildren<QToolButton*>())
            if (button->text() == text && button->isVisible())
                return button;
        return nullptr;
    }
    static QCheckBox* ignored()
    {
        for (auto* box : panel()->findChildren<QCheckBox*>())
            if (box->text() == "Ignored")
                return box;
        return nullptr;
    }

    SoSphere* sphere = new SoSphere;
    SoInfo* info = new SoInfo;
};

TEST_F(FieldEditorTest, FollowsTheSelectedFieldWhileItIsSeen)
{
    choose(info->string);
    ASSERT_TRUE(widget());
    EXPECT_EQ(panel()->findChild<QLabel*>("fieldName")->text(), "string");
    EXPECT_EQ(panel()->findChild<QLabel*>("fieldPlace")->text(), "SFString of Info");
    const QPointer<MrbFieldWidget> first = widget();
    choose(sphere->radius);
    EXPECT_FALSE(first);
    EXPECT_EQ(panel()->findChild<QLabel*>("fieldPlace")->text(), "SFFloat of Sphere");
    const int auditors = sphere->radius.getAuditors().getLength();
    panel()->parentWidget()->hide();
    support::flush();
    EXPECT_LT(sphere->radius.getAuditors().getLength(), auditors)
        << "a hidden panel follows nothing";
    panel()->parentWidget()->show();
    EXPECT_TRUE(widget());
    MrbServices::getInstance()->setSelectedField(nullptr);
    EXPECT_FALSE(widget());
}

TEST_F(FieldEditorTest, ClosesWhenTheNodeDies)
{
    choose(info->string);
    ASSERT_TRUE(widget());
    scene->removeChild(info);
    EXPECT_FALSE(widget());
    choose(sphere->radius);
    EXPECT_TRUE(widget());
}

TEST_F(FieldEditorTest, ShowsAndSwitchesTheState)
{
    choose(sphere->radius);
    EXPECT_FALSE(button("Default")->isEnabled());
    sphere->radius = 3;
    ASSERT_TRUE(support::passUntil([] { return button("Reset") != nullptr; }));
    button("Reset")->click();
    EXPECT_EQ(sphere->radius.getValue(), 1);
    EXPECT_TRUE(sphere->radius.isDefault());
    EXPECT_EQ(action("&Undo")->toolTip().contains("Reset radius of Sphere"), true)
        << action("&Undo")->toolTip().toStdString();
    undo();
    EXPECT_EQ(sphere->radius.getValue(), 3);
    EXPECT_FALSE(sphere->radius.isDefault());

    ignored()->click();
    EXPECT_TRUE(sphere->radius.isIgnored());
    undo();
    EXPECT_FALSE(sphere->radius.isIgnored());
    ASSERT_TRUE(support::passUntil([] { return !ignored()->isChecked(); }));
}

TEST_F(FieldEditorTest, ShowsWhatDrivesAFieldAndDisconnectsIt)
{
    auto* cone = new SoCone;
    scene->addChild(cone);
    cone->height = 7;
    sphere->radius.connectFrom(&cone->height);
    choose(sphere->radius);
    auto* source = panel()->findChild<QLabel*>("fieldSource");
    EXPECT_TRUE(source->text().contains("height of Cone"));
    EXPECT_TRUE(isReadOnly());
    button("Disconnect")->click();
    EXPECT_FALSE(sphere->radius.isConnected());
    EXPECT_EQ(sphere->radius.getValue(), 7);
    ASSERT_TRUE(support::passUntil([] { return !isReadOnly(); }));
    undo();
    EXPECT_EQ(sphere->radius.getConnectedField(), &cone->height);
    ASSERT_TRUE(support::passUntil([] { return isReadOnly(); }));
    Q_EMIT source->linkActivated("source");
    EXPECT_TRUE(widget());
    EXPECT_EQ(panel()->findChild<QLabel*>("fieldPlace")->text(), "SFFloat of Cone");
}

TEST_F(FieldEditorTest, KeepsAnEngineThatOnlyItsFollowerHeld)
{
    auto* time = new SoElapsedTime;
    sphere->radius.connectFrom(time->getOutput("timeOut"));
    choose(sphere->radius);
    button("Disconnect")->click();
    ASSERT_FALSE(sphere->radius.isConnected());
    undo();
    EXPECT_TRUE(sphere->radius.isConnected());
}

TEST_F(FieldEditorTest, EditsSeveralFieldsTogether)
{
    auto* other = new SoInfo;
    scene->addChild(other);
    other->string = "other";
    choose(info->string);
    panel()->findChild<QToolButton*>("keepField")->click();
    choose(sphere->radius);
    EXPECT_FALSE(panel()->findChild<QToolButton*>("addField")->isEnabled()) << "another type";
    choose(other->string);
    panel()->findChild<QToolButton*>("addField")->click();
    auto* input = control<QPlainTextEdit>();
    input->setFocus();
    input->selectAll();
    QTest::keyClicks(input, "both");
    EXPECT_EQ(info->string.getValue(), "both");
    EXPECT_EQ(other->string.getValue(), "both");
    undo();
    EXPECT_TRUE(info->string.isDefault());
    EXPECT_EQ(other->string.getValue(), "other");
    EXPECT_FALSE(canUndo());
}

/// Typing is one command; Escape gives back the value from before.
TEST_F(FieldEditorTest, MakesABurstOfTypingOneCommand)
{
    choose(info->string);
    auto* input = control<QPlainTextEdit>();
    input->setFocus();
    input->selectAll();
    QTest::keyClicks(input, "live");
    EXPECT_EQ(info->string.getValue(), "live");
    QTest::keyClick(input, Qt::Key_Return, Qt::ControlModifier);
    QTest::keyClicks(input, "!");
    EXPECT_EQ(info->string.getValue(), "live!");
    QTest::keyClick(input, Qt::Key_Escape);
    EXPECT_EQ(info->string.getValue(), "live");
    EXPECT_EQ(input->toPlainText(), "live");
    undo();
    EXPECT_TRUE(info->string.isDefault());
    EXPECT_FALSE(canUndo());
    redo();
    EXPECT_EQ(info->string.getValue(), "live");
}

TEST_F(FieldEditorTest, FollowsTheFieldUnlessTheUserIsTyping)
{
    choose(info->string);
    info->string = "from outside";
    auto* input = control<QPlainTextEdit>();
    ASSERT_TRUE(support::passUntil([&] { return input->toPlainText() == "from outside"; }));
    input->setFocus();
    QTest::keyClicks(input, "typed ");
    EXPECT_EQ(info->string.getValue(), "typed from outside");
    info->string = "again";
    ASSERT_TRUE(support::passUntil([] { return widget()->isOutdated(); }));
    EXPECT_EQ(input->toPlainText(), "typed from outside");
    EXPECT_TRUE(input->hasFocus());
    EXPECT_TRUE(panel()->findChild<QWidget*>("outdated")->isVisible());
}

/// What the host does when a field changes, inside the change.
class FieldEditorEnds : public FieldEditorTest, public testing::WithParamInterface<int> {
public:
    void hostActs()
    {
        switch (GetParam()) {
        case 0:
            SoLibMirabo::instance()->m_mirabo_stop();
            break;
        case 1:
            delete window();
            break;
        case 2:
            scene->removeAllChildren();
            break;
        default:
            MrbServices::getInstance()->setSelectedField(&info->string);
            break;
        }
    }
};

TEST_P(FieldEditorEnds, TheHostActsWhileAFieldIsEdited)
{
    const SoRef<SoNode> kept(info);
    const SoRef<SoSphere> keptSphere(GetParam() == 2 ? nullptr : sphere);
    bool hasActed = false;
    SoFieldSensor sensor(
        [](void* data, SoSensor*) {
            auto& [test, done] = *static_cast<std::pair<FieldEditorEnds*, bool*>*>(data);
            if (!std::exchange(*done, true))
                test->hostActs();
        },
        nullptr);
    std::pair<FieldEditorEnds*, bool*> data(this, &hasActed);
    sensor.setData(&data);
    sensor.setPriority(0);
    sensor.attach(&sphere->radius);
    choose(sphere->radius);
    auto* line = control<QLineEdit>();
    line->setFocus();
    line->selectAll();
    QTest::keyClicks(line, "4");
    support::flush();
    EXPECT_TRUE(hasActed);
    if (keptSphere) {
        EXPECT_EQ(keptSphere->radius.getValue(), 4);
    }
    sensor.detach();
}

INSTANTIATE_TEST_SUITE_P(All, FieldEditorEnds, testing::Range(0, 4));

} // namespace
