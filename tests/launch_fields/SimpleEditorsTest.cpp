#include "EditorTool.h"
#include "ProbeNode.h"

#include <kalmyr/engines/SoElapsedTime.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoSFPath.h>
#include <kalmyr/nodes/SoDrawStyle.h>
#include <kalmyr/nodes/SoInfo.h>
#include <kalmyr/nodes/SoSwitch.h>
#include <kalmyr/shapes/SoCone.h>
#include <kalmyr/shapes/SoSphere.h>
#include <kalmyr/vrml/SoVRMLShape.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDragEnterEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolButton>

namespace {

/// Editors without numbers and tables, by mouse and keys.
class SimpleEditorsTest : public EditorTool {
protected:
    void SetUp() override
    {
        EditorTool::SetUp();
        probe = makeProbe();
        scene->addChild(probe.get());
        scene->addChild(style);
        scene->addChild(cone);
        scene->addChild(shape);
        start();
    }
    SoField& field(const char* name) { return *probe->getField(SbName(name)); }
    static QToolButton* button(const QString& text)
    {
        for (auto* button : widget()->findChildren<QToolButton*>())
            if (button->text() == text)
                return button;
        return nullptr;
    }
    static QCheckBox* box(const QString& text)
    {
        for (auto* box : widget()->findChildren<QCheckBox*>())
            if (box->text() == text)
                return box;
        return nullptr;
    }
    static QDialog* dialog()
    {
        support::flush();
        return qobject_cast<QDialog*>(QApplication::activeModalWidget());
    }
    /// Chooses in the dialog that is open, as a user does.
    static void chooseNode(const char* search)
    {
        QDialog* chooser = dialog();
        ASSERT_TRUE(chooser);
        QTest::keyClicks(chooser->findChild<QLineEdit*>(), search);
        chooser->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
        support::flush();
    }

    SoRef<SoNode> probe;
    SoDrawStyle* style = new SoDrawStyle;
    SoCone* cone = new SoCone;
    SoVRMLShape* shape = new SoVRMLShape;
};

TEST_F(SimpleEditorsTest, Booleans)
{
    SoField& boolean = field("oneSFBool");
    choose(boolean);
    auto* check = control<QCheckBox>();
    QTest::mouseClick(check, Qt::LeftButton, {}, QPoint(5, check->height() / 2));
    EXPECT_EQ(textOf(boolean), "TRUE");
    QTest::keyClick(check, Qt::Key_Space);
    EXPECT_EQ(textOf(boolean), "FALSE");
    undo();
    undo();
    EXPECT_TRUE(boolean.isDefault());
}

TEST_F(SimpleEditorsTest, EnumerationsAndValuesWithoutAName)
{
    choose(style->style);
    auto* choice = control<QComboBox>();
    choice->setFocus();
    QTest::keyClick(choice, Qt::Key_Down);
    EXPECT_EQ(textOf(style->style), "LINES");
    style->style.setValue(77);
    ASSERT_TRUE(support::passUntil([&] { return choice->currentText() == "77 (no name)"; }));
    QTest::keyClick(choice, Qt::Key_Home);
    EXPECT_EQ(textOf(style->style), "FILLED");
    undo();
    EXPECT_EQ(style->style.getValue(), 77);
}

TEST_F(SimpleEditorsTest, BitMasksKeepTheBitsWithoutAName)
{
    cone->parts.setValue(SoCone::ALL | 0x40000000);
    choose(cone->parts);
    box("BOTTOM")->click();
    EXPECT_EQ(cone->parts.getValue(), SoCone::SIDES | 0x40000000);
    button("None")->click();
    EXPECT_EQ(cone->parts.getValue(), 0x40000000);
    button("All")->click();
    EXPECT_EQ(cone->parts.getValue(), SoCone::ALL | 0x40000000);
    undo();
    undo();
    undo();
    EXPECT_EQ(cone->parts.getValue(), SoCone::ALL | 0x40000000);
}

TEST_F(SimpleEditorsTest, StringsOfSeveralLinesAndNames)
{
    SoField& string = field("oneSFString");
    choose(string);
    auto* block = control<QPlainTextEdit>();
    block->setFocus();
    QTest::keyClicks(block, "a");
    QTest::keyClick(block, Qt::Key_Return);
    block->insertPlainText(QString::fromUtf8("\xc3\xa9 \xf0\x9f\x9a\x82"));
    EXPECT_EQ(textOf(string), "\"a\n\xc3\xa9 \xf0\x9f\x9a\x82\"");
    undo();
    EXPECT_TRUE(string.isDefault());

    SoField& name = field("oneSFName");
    choose(name);
    auto* line = control<QLineEdit>();
    line->setFocus();
    QTest::keyClicks(line, "wheel");
    QTest::keyClick(line, Qt::Key_Return);
    QTest::keyClicks(line, "s");
    QTest::keyClick(line, Qt::Key_Escape);
    EXPECT_EQ(textOf(name), "wheel");
    EXPECT_EQ(line->text(), "wheel");
    undo();
    EXPECT_TRUE(name.isDefault());
}

/// A type without an editor: its text, checked as it is typed.
TEST_F(SimpleEditorsTest, TextIsCheckedAndAppliedWhenItIsWhole)
{
    const SoRef<SoNode> held(new SoSwitch);
    SoInput in;
    const std::string text = "#Kalmyr V1.0 ascii\nProbe { fields [ SFArray data ] }\n";
    in.setBuffer(text.data(), text.size());
    SoNode* node = nullptr;
    ASSERT_TRUE(SoDB::read(&in, node));
    scene->addChild(node);
    SoField& array = *node->getField("data");
    choose(array);
    const std::string before = textOf(array);
    auto* block = control<QPlainTextEdit>();
    ASSERT_TRUE(block);
    block->setFocus();
    block->selectAll();
    QTest::keyClicks(block, "UNSIGNED_BYTE 2 1 1 [ 1, x");
    EXPECT_EQ(textOf(array), before);
    EXPECT_TRUE(block->toolTip().contains("1:")) << block->toolTip().toStdString();
    QTest::keyClick(block, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(textOf(array), before) << "nothing illegal is applied";
    EXPECT_TRUE(block->toPlainText().endsWith('x')) << "nor lost";
    QTest::keyClick(block, Qt::Key_Backspace);
    QTest::keyClicks(block, "2 ]");
    EXPECT_EQ(textOf(array), before) << "not before it is applied";
    QTest::keyClick(block, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_NE(textOf(array), before);
    undo();
    EXPECT_EQ(textOf(array), before);
    block->setFocus();
    QTest::keyClicks(block, "zzz");
    QTest::keyClick(block, Qt::Key_Escape);
    EXPECT_EQ(block->toPlainText().toStdString(), before);
}

TEST_F(SimpleEditorsTest, NodesAreChosenTakenAwayAndDropped)
{
    choose(shape->geometry);
    EXPECT_FALSE(button("None")->isEnabled());
    button("Choose...")->click();
    chooseNode("cone");
    EXPECT_EQ(shape->geometry.getValue(), cone);
    ASSERT_TRUE(support::passUntil([] { return button("None")->isEnabled(); }));
    button("None")->click();
    EXPECT_EQ(shape->geometry.getValue(), nullptr);
    undo();
    EXPECT_EQ(shape->geometry.getValue(), cone);
    undo();
    EXPECT_EQ(shape->geometry.getValue(), nullptr);

    // The row of the tree is the current one when it is dropped.
    panel()->findChild<QToolButton*>("keepField")->click();
    MrbServices::getInstance()->setSelectedNode(cone);
    support::flush();
    QMimeData data;
    data.setData("treeviewnodeobject", QByteArray());
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(widget(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(widget(), &drop);
    EXPECT_EQ(shape->geometry.getValue(), cone);
}

/// Not a graph without end.
TEST_F(SimpleEditorsTest, RefusesANodeThatHoldsTheField)
{
    choose(shape->geometry);
    const auto refused = support::expectErrors();
    button("Choose...")->click();
    chooseNode("Separator");
    EXPECT_EQ(shape->geometry.getValue(), nullptr);
}

TEST_F(SimpleEditorsTest, ConnectsByADialogAndGoesToAnEngine)
{
    auto* sphere = new SoSphere;
    scene->addChild(sphere);
    support::flush();
    choose(sphere->radius);
    for (auto* connectButton : panel()->findChildren<QToolButton*>())
        if (connectButton->text() == "Connect...")
            connectButton->click();
    QDialog* chooser = dialog();
    ASSERT_TRUE(chooser);
    QTest::keyClicks(chooser->findChild<QLineEdit*>(), "cone");
    auto* fields = chooser->findChild<QComboBox*>();
    fields->setCurrentText("height");
    chooser->accept();
    support::flush();
    EXPECT_EQ(sphere->radius.getConnectedField(), &cone->height);
    EXPECT_EQ(sphere->radius.getValue(), cone->height.getValue());
    undo();
    EXPECT_TRUE(sphere->radius.isDefault());
    EXPECT_FALSE(sphere->radius.isConnected());

    auto* time = new SoElapsedTime;
    sphere->radius.connectFrom(time->getOutput("timeOut"));
    choose(sphere->radius);
    Q_EMIT panel()->findChild<QLabel*>("fieldSource")->linkActivated("source");
    support::flush();
    EXPECT_EQ(panel()->findChild<QLabel*>("fieldPlace")->text(), "SFTime of ElapsedTime");
    EXPECT_TRUE(isReadOnly());
}

/// The dialog may be open when the scene, the field or the tool goes.
TEST_F(SimpleEditorsTest, TheToolEndsWhileANodeIsBeingChosen)
{
    choose(shape->geometry);
    button("Choose...")->click();
    const QPointer<QDialog> chooser = dialog();
    ASSERT_TRUE(chooser);
    SoLibMirabo::instance()->m_mirabo_stop();
    support::flush();
    EXPECT_FALSE(chooser);
}

TEST_F(SimpleEditorsTest, TheNodeDiesWhileOneIsBeingChosenForIt)
{
    choose(shape->geometry);
    button("Choose...")->click();
    ASSERT_TRUE(dialog());
    scene->removeChild(shape);
    EXPECT_FALSE(dialog());
    EXPECT_FALSE(widget());
}

} // namespace
