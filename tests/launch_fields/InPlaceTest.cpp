#include "EditorTool.h"

#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/shapes/SoCone.h>
#include <kalmyr/shapes/SoSphere.h>

#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <QMimeData>
#include <QStatusBar>
#include <QTabWidget>
#include <QTreeWidget>

namespace {

constexpr int kFieldName = 6;
constexpr int kFieldValue = 7;

/// Values edited in the rows of the node overview.
class InPlaceTest : public EditorTool {
protected:
    void SetUp() override
    {
        EditorTool::SetUp();
        scene->addChild(sphere);
        scene->addChild(move);
        start();
    }
    static QTreeWidget* list()
    {
        auto* tabs = window()->findChild<QTabWidget*>("SoTabNodeOverview");
        return tabs->currentWidget()->findChild<QTreeWidget*>("m_nodeOverviewList");
    }
    static void show(SoNode* node)
    {
        MrbServices::getInstance()->setSelectedNode(node);
        support::flush();
    }
    static QPoint cellOf(const QString& field)
    {
        QTreeWidgetItem* row = list()->findItems(field, Qt::MatchExactly, kFieldName).value(0);
        EXPECT_TRUE(row) << field.toStdString();
        list()->scrollToItem(row);
        support::flush();
        const QModelIndex index =
            list()->model()->index(list()->indexOfTopLevelItem(row), kFieldValue);
        return list()->visualRect(index).center();
    }
    static void click(const QString& field)
    {
        list()->setFocus(Qt::MouseFocusReason);
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, cellOf(field));
        support::flush();
    }
    static void doubleClick(const QString& field)
    {
        click(field);
        QTest::mouseDClick(list()->viewport(), Qt::LeftButton, {}, cellOf(field));
        support::flush();
    }
    static MrbFieldWidget* editor()
    {
        support::flush();
        return list()->viewport()->findChild<MrbFieldWidget*>();
    }
    static QWidget* focus() { return QApplication::focusWidget(); }
    static QString message() { return window()->statusBar()->currentMessage(); }

    SoSphere* sphere = new SoSphere;
    SoTranslation* move = new SoTranslation;
};

TEST_F(InPlaceTest, EditsByDoubleClickReturnAndEscape)
{
    show(sphere);
    doubleClick("radius");
    ASSERT_TRUE(editor());
    ASSERT_TRUE(editor()->isAncestorOf(focus()));
    auto* line = editor()->findChild<QLineEdit*>();
    line->selectAll();
    QTest::keyClicks(line, "2.5");
    EXPECT_EQ(sphere->radius.getValue(), 2.5F) << "live";
    QTest::keyClick(line, Qt::Key_Return);
    EXPECT_FALSE(editor());
    EXPECT_EQ(focus(), list());
    EXPECT_FALSE(sphere->radius.isDefault());

    QTest::keyClick(list(), Qt::Key_Return);
    ASSERT_TRUE(editor());
    QTest::keyClick(editor()->findChild<QLineEdit*>(), Qt::Key_Return); // confirmed unchanged
    EXPECT_FALSE(editor());

    QTest::keyClick(list(), Qt::Key_F2);
    line = editor()->findChild<QLineEdit*>();
    line->selectAll();
    QTest::keyClicks(line, "9");
    QTest::keyClick(line, Qt::Key_Escape);
    EXPECT_EQ(sphere->radius.getValue(), 2.5F);
    QTest::keyClick(focus(), Qt::Key_Escape);
    EXPECT_FALSE(editor());
    undo();
    EXPECT_TRUE(sphere->radius.isDefault());
    EXPECT_FALSE(canUndo());
}

TEST_F(InPlaceTest, LeavesAValueThatIsConfirmedUntouched)
{
    show(sphere);
    doubleClick("radius");
    QTest::keyClick(editor()->findChild<QLineEdit*>(), Qt::Key_Return);
    EXPECT_TRUE(sphere->radius.isDefault());
    EXPECT_FALSE(canUndo());
}

TEST_F(InPlaceTest, ClosesWhenTheFocusGoesAndWhenTheNodeDies)
{
    show(sphere);
    doubleClick("radius");
    ASSERT_TRUE(editor());
    window()->findChild<QComboBox*>("SearchBox")->setFocus();
    EXPECT_FALSE(editor());
    doubleClick("radius");
    const QPointer<MrbFieldWidget> open = editor();
    ASSERT_TRUE(open);
    scene->removeChild(sphere);
    support::flush();
    EXPECT_TRUE(!open || !open->isEnabled());
    show(move);
    EXPECT_FALSE(open);
}

TEST_F(InPlaceTest, SaysWhyAValueCannotBeEdited)
{
    auto* cone = new SoCone;
    scene->addChild(cone);
    sphere->radius.connectFrom(&cone->height);
    show(sphere);
    doubleClick("radius");
    EXPECT_FALSE(editor());
    EXPECT_TRUE(message().contains("driven by height of Cone")) << message().toStdString();
}

TEST_F(InPlaceTest, CopiesAndPastesValuesOfTheSameKind)
{
    auto* cone = new SoCone;
    scene->addChild(cone);
    cone->height = 0.1F;
    show(cone);
    click("height");
    QTest::keyClick(list(), Qt::Key_C, Qt::ControlModifier);
    show(sphere);
    click("radius");
    QTest::keyClick(list(), Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(sphere->radius.getValue(), 0.1F) << "to the bit";
    undo();
    EXPECT_TRUE(sphere->radius.isDefault());

    show(move);
    click("translation");
    QTest::keyClick(list(), Qt::Key_V, Qt::ControlModifier);
    EXPECT_TRUE(move->translation.isDefault());
    EXPECT_TRUE(message().contains("SFFloat")) << message().toStdString();

    QApplication::clipboard()->setText("1 2 x");
    QTest::keyClick(list(), Qt::Key_V, Qt::ControlModifier);
    EXPECT_TRUE(move->translation.isDefault());
    EXPECT_TRUE(message().contains("1:5")) << message().toStdString();
    QApplication::clipboard()->setText("1 2 3");
    QTest::keyClick(list(), Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(move->translation.getValue(), SbVec3f(1, 2, 3));
}

TEST_F(InPlaceTest, ResetsFromTheRow)
{
    sphere->radius = 4;
    show(sphere);
    click("radius");
    QMetaObject::invokeMethod(list(), "resetCurrent");
    EXPECT_TRUE(sphere->radius.isDefault());
    undo();
    EXPECT_EQ(sphere->radius.getValue(), 4);
}

} // namespace
