#include "TreeEditScene.h"

#include "mirabo/tree/DropGuide.h"
#include "mirabo/tree/MovePlan.h"

#include <kalmyr/nodekits/SoNodeKitListPart.h>
#include <kalmyr/nodekits/SoShapeKit.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCube.h>

#include <QDropEvent>
#include <QImage>
#include <QMimeData>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

#include <cmath>

namespace {

/// root { Separator wheel { Material, Cube }, Separator hub, Transform }, with all rows in sight,
/// and a mouse that drags them.
class TreeDrag : public TreeTest {
protected:
    TreeDrag() : edited(view)
    {
        wheel = new SoSeparator;
        wheel->setName("wheel");
        wheel->addChild(material = new SoMaterial);
        wheel->addChild(cube = new SoCube);
        root->addChild(wheel);
        root->addChild(hub = new SoSeparator);
        hub->setName("hub");
        root->addChild(transform = new SoTransform);
        data.setText("Mirabo/Drop");
        QObject::connect(&view, &SoMiraboTreeView::statusHint, &view,
                         [this](const QString& text) { hint = text.toStdString(); });
        view.show();
        view.expandAll();
        edited.stack.clear();
        pass();
    }
    ~TreeDrag() override { view.setSceneGraph(nullptr); }

    QRect rectOf(const SoNode* node) const { return view.visualItemRect(row(node)); }
    void press(const SoNode* node)
    {
        QTest::mousePress(view.viewport(), Qt::LeftButton, {}, rectOf(node).center());
    }
    void moveTo(QPoint point, Qt::KeyboardModifiers keys = Qt::NoModifier)
    {
        QDragMoveEvent event(point, Qt::MoveAction, &data, Qt::LeftButton, keys);
        QCoreApplication::sendEvent(view.viewport(), &event);
        EXPECT_TRUE(event.isAccepted());
    }
    void moveTo(const SoNode* node, Qt::KeyboardModifiers keys = Qt::NoModifier)
    {
        moveTo(rectOf(node).center(), keys);
    }
    void enter()
    {
        QDragEnterEvent event({5, 5}, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(view.viewport(), &event);
    }
    /// Presses on a node and moves it onto another; what the status bar says then.
    std::string drag(const SoNode* node, const SoNode* target,
                     Qt::KeyboardModifiers keys = Qt::NoModifier)
    {
        press(node);
        enter();
        moveTo(target, keys);
        return hint;
    }
    void drop(const SoNode* target, Qt::KeyboardModifiers keys = Qt::NoModifier)
    {
        QDropEvent event(rectOf(target).center(), Qt::MoveAction, &data, Qt::LeftButton, keys);
        QCoreApplication::sendEvent(view.viewport(), &event);
        EXPECT_TRUE(event.isAccepted());
        EXPECT_EQ(hint, "");
        QTest::mouseRelease(view.viewport(), Qt::LeftButton);
    }
    void leave()
    {
        QDragLeaveEvent event;
        QCoreApplication::sendEvent(view.viewport(), &event);
        QTest::mouseRelease(view.viewport(), Qt::LeftButton);
        EXPECT_EQ(hint, "");
    }
    QImage picture() { return view.viewport()->grab().toImage(); }
    /// Where two pictures differ.
    static QRect markIn(const QImage& with, const QImage& without)
    {
        QRect mark;
        for (int y = 0; y < with.height(); ++y)
            for (int x = 0; x < with.width(); ++x)
                if (with.pixel(x, y) != without.pixel(x, y))
                    mark |= QRect(x, y, 1, 1);
        return mark;
    }
    /// What is drawn on account of a drag to that node.
    QRect markAt(const SoNode* node)
    {
        enter();
        moveTo(node);
        const QImage with = picture();
        QDragLeaveEvent event;
        QCoreApplication::sendEvent(view.viewport(), &event);
        return markIn(with, picture());
    }
    QTimer& timer(const char* name) { return *view.dropGuide().findChild<QTimer*>(name); }
    /// Lets a timer run out that is running.
    void runOut(const char* name)
    {
        QTimer& waiting = timer(name);
        ASSERT_TRUE(waiting.isActive());
        const int interval = waiting.interval();
        QSignalSpy timeouts(&waiting, &QTimer::timeout);
        waiting.setInterval(0);
        while (timeouts.isEmpty())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        waiting.setInterval(interval);
    }

    EditedTree edited;
    QMimeData data;
    std::string hint;
    SoSeparator* wheel;
    SoSeparator* hub;
    SoMaterial* material;
    SoCube* cube;
    SoTransform* transform;
};

} // namespace

TEST_F(TreeDrag, TellsWhereTheDropGoesAndGoesThere)
{
    EXPECT_EQ(drag(transform, wheel),
              "Move Transform into wheel, behind its other nodes   (press the space bar before you "
              "drag: behind wheel; hold Ctrl: use it here as well)");
    drop(wheel);
    EXPECT_EQ(wheel->findChild(transform), 2);

    EXPECT_EQ(drag(transform, wheel).substr(0, 36), "Move Transform to the front of wheel");
    drop(wheel);
    EXPECT_EQ(wheel->findChild(transform), 0);

    EXPECT_EQ(drag(transform, cube),
              "Move Transform behind Cube   (hold Ctrl: use it here as well)");
    drop(cube);
    EXPECT_EQ(wheel->findChild(transform), 2);

    QTest::keyPress(&view, Qt::Key_Space);
    EXPECT_EQ(drag(transform, hub), "Move Transform behind hub   (hold Ctrl: use it here as well)");
    drop(hub);
    QTest::keyRelease(&view, Qt::Key_Space);
    EXPECT_EQ(root->findChild(transform), 2);
    EXPECT_EQ(edited.stack.count(), 4);
    EXPECT_EQ(edited.box(), "");
    for (int i = 0; i < 4; ++i)
        edited.stack.undo();
    EXPECT_EQ(root->findChild(transform), 2);
    EXPECT_EQ(check(), "");
}

TEST_F(TreeDrag, AddsAReferenceWithCtrl)
{
    EXPECT_EQ(drag(cube, hub).substr(0, 18), "Move Cube into hub");
    moveTo(hub, Qt::ControlModifier); // pressed on the way
    EXPECT_EQ(hint, "Use Cube in hub as well, behind its other nodes   (press the space bar "
                    "before you drag: behind hub)");
    drop(hub, Qt::ControlModifier);
    EXPECT_EQ(wheel->findChild(cube), 1);
    EXPECT_EQ(hub->findChild(cube), 0);
    EXPECT_EQ(rowsOf(cube), 2);
    EXPECT_EQ(edited.names.back(), "Add Cube");
    edited.stack.undo();
    EXPECT_EQ(hub->getNumChildren(), 0);
    EXPECT_EQ(wheel->findChild(cube), 1);
    EXPECT_EQ(cube->getRefCount(), 1);
}

TEST_F(TreeDrag, TellsWhatADropWouldRefuseAndWhy)
{
    auto* kit = new SoShapeKit;
    SoNode* list = kit->getPart("childList");
    root->addChild(kit);
    auto* holder = new FieldHolder;
    holder->one = new SoCube;
    root->addChild(holder);
    view.expandAll();
    pass();
    edited.stack.clear();
    const std::string text = textOf(root.get());
    const auto expectRefused = [&](const SoNode* node, const SoNode* target, const char* why,
                                   Qt::KeyboardModifiers keys = Qt::NoModifier) {
        EXPECT_EQ(drag(node, target, keys), why);
        drop(target, keys);
        EXPECT_EQ(textOf(root.get()), text);
        EXPECT_EQ(edited.stack.count(), 0);
        return edited.box();
    };
    // Below itself the drop is refused in silence; the hint tells before.
    EXPECT_EQ(
        expectRefused(wheel, cube, "wheel cannot be moved here. The wheel would hold itself."), "");
    EXPECT_EQ(expectRefused(transform, transform, "The Transform is there already."), "");
    EXPECT_EQ(expectRefused(cube, material, "The Cube is there already."), "");
    EXPECT_EQ(expectRefused(transform, list,
                            "Transform cannot be moved here. The list takes no Transform."),
              "Mirabo Move Node: Transform can't be moved.<br>The list takes no Transform.");
    EXPECT_EQ(expectRefused(transform, holder->one,
                            "Transform cannot be used here. The FieldHolder keeps no list of nodes "
                            "here.",
                            Qt::ControlModifier),
              "Add node: Can not add this node<br>The FieldHolder keeps no list of nodes here.");
    const SoRef<FieldHolder> master(new FieldHolder);
    master->one = holder->one;
    holder->one.connectFrom(&master->one);
    pass();
    EXPECT_NE(drag(holder->one, hub).find("The field \"one\" is connected."), std::string::npos);
    leave();
}

TEST_F(TreeDrag, MarksThePlaceInTheTree)
{
    press(transform);
    // Into: around the row. Behind: a line below the row, or below all that is open there.
    const QRect into = markAt(wheel);
    EXPECT_TRUE(rectOf(wheel).contains(into)) << into.top() << ' ' << into.bottom();
    EXPECT_GT(into.height(), rectOf(wheel).height() - 6);
    const QRect behind = markAt(cube);
    EXPECT_LE(std::abs(behind.center().y() - rectOf(cube).bottom()), 2);
    EXPECT_LT(behind.height(), 14);
    EXPECT_GE(behind.left(), rectOf(cube).left());
    QTest::keyPress(&view, Qt::Key_Space);
    const QRect behindAll = markAt(wheel);
    EXPECT_LE(std::abs(behindAll.center().y() - rectOf(cube).bottom()), 2);
    EXPECT_LT(behindAll.left(), behind.left()); // the level tells what it goes behind
    QTest::keyRelease(&view, Qt::Key_Space);
    QTest::mouseRelease(view.viewport(), Qt::LeftButton);

    // To the front: below the row, one level further in. Nothing to do: no mark.
    press(cube);
    const QRect front = markAt(wheel);
    EXPECT_LE(std::abs(front.center().y() - rectOf(wheel).bottom()), 2);
    EXPECT_GT(front.left(), rectOf(wheel).left());
    EXPECT_TRUE(markAt(cube).isEmpty());
    QTest::mouseRelease(view.viewport(), Qt::LeftButton);

    // What is refused has another mark than what is taken.
    press(wheel);
    const QRect refused = markAt(cube); // its dashes are blurred by a pixel
    EXPECT_TRUE(rectOf(cube).adjusted(0, -1, 0, 1).contains(refused))
        << refused.top() << ' ' << refused.bottom() << ' ' << rectOf(cube).top();
    enter();
    moveTo(hub);
    const QImage taken = picture().copy(rectOf(hub));
    leave();
    press(root.get());
    enter();
    moveTo(hub);
    EXPECT_NE(picture().copy(rectOf(hub)), taken);
    leave();
}

TEST_F(TreeDrag, OpensTheBranchThatTheMouseRestsOn)
{
    view.collapseItem(row(wheel));
    pass();
    drag(transform, hub);
    EXPECT_FALSE(timer("openTimer").isActive()); // nothing is below it
    moveTo(wheel);
    EXPECT_TRUE(timer("openTimer").isActive());
    moveTo(hub);
    EXPECT_FALSE(timer("openTimer").isActive());
    EXPECT_FALSE(row(wheel)->isExpanded());
    moveTo(wheel);
    moveTo(rectOf(wheel).center() + QPoint(3, 1));
    runOut("openTimer");
    EXPECT_TRUE(row(wheel)->isExpanded());
    EXPECT_EQ(hint.substr(0, 25), "Move Transform into wheel");
    // The scene may change meanwhile.
    view.collapseItem(row(wheel));
    pass();
    moveTo(hub);
    moveTo(wheel);
    root->removeChild(wheel);
    if (timer("openTimer").isActive())
        runOut("openTimer");
    EXPECT_EQ(check(), "");
    leave();
    EXPECT_FALSE(timer("openTimer").isActive());
}

TEST_F(TreeDrag, ScrollsNearTheEdges)
{
    for (int i = 0; i < 100; ++i)
        root->addChild(new SoCube);
    pass();
    QScrollBar* bar = view.verticalScrollBar();
    press(transform);
    enter();
    const QPoint low(40, view.viewport()->height() - 2);
    moveTo(low);
    std::string before = hint;
    for (int i = 0; i < 3; ++i) {
        const int value = bar->value();
        runOut("scrollTimer");
        EXPECT_GT(bar->value(), value);
    }
    EXPECT_EQ(view.dropGuide().plan().target, view.itemAt(low)); // of the row that is there now
    moveTo(QPoint(40, view.viewport()->height() / 2));
    EXPECT_FALSE(timer("scrollTimer").isActive());
    moveTo(QPoint(40, 1));
    const int value = bar->value();
    runOut("scrollTimer");
    EXPECT_LT(bar->value(), value);
    leave();
    EXPECT_FALSE(timer("scrollTimer").isActive());
}

TEST_F(TreeDrag, MovesByTheKeyboardAlone)
{
    constexpr auto kBoth = Qt::ControlModifier | Qt::ShiftModifier;
    const auto key = [&](Qt::Key code) { QTest::keyClick(&view, code, kBoth); };
    view.setFocus();
    view.setCurrentItem(row(transform));
    key(Qt::Key_Right); // into the group before it
    EXPECT_EQ(hub->findChild(transform), 0);
    key(Qt::Key_Left); // out behind it
    EXPECT_EQ(root->findChild(transform), 2);
    key(Qt::Key_Up);
    key(Qt::Key_Up);
    EXPECT_EQ(root->findChild(transform), 0);
    EXPECT_EQ(view.getCurrentNode(), transform);
    EXPECT_EQ(edited.stack.count(), 4);
    // At the ends, and for the root, nothing happens and nobody is told.
    key(Qt::Key_Up);
    key(Qt::Key_Right);
    view.setCurrentItem(view.rootItem());
    key(Qt::Key_Down);
    key(Qt::Key_Left);
    EXPECT_EQ(edited.stack.count(), 4);
    EXPECT_EQ(edited.box(), "");
    // A group that cannot take it tells why.
    view.setCurrentItem(row(cube));
    key(Qt::Key_Right);
    EXPECT_EQ(edited.box(), "Mirabo Move Node: Cube can't be moved.<br>The Material keeps no list "
                            "of nodes.");
    for (int i = 0; i < 4; ++i)
        edited.stack.undo();
    EXPECT_EQ(root->findChild(transform), 2);
    EXPECT_EQ(check(), "");
}
