// The viewer of the standalone window: clicks choose, drags turn, and its settings stay.
#include "StandaloneSupport.h"

#include <kalmyr/cameras/SoCamera.h>
#include <kalmyr/gui/SoGuiExaminerViewer.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/qt/SoQtExaminerViewer.h>
#include <kalmyr/shapes/SoCube.h>

#include <QAction>
#include <QTest>

namespace {

class OneMode : public StandaloneTest {
protected:
    void SetUp() override
    {
        StandaloneTest::SetUp();
        const SoRef<SoSeparator> root(new SoSeparator);
        root->addChild(new SoCube);
        viewer->setScene(root.get(), true);
        support::flush();
        ASSERT_TRUE(examiner().redraw() || examiner().getDrawing() == SoQtRenderArea::NONE);
    }

    SoQtExaminerViewer& examiner() const { return *viewer->getExaminerViewer(); }
    QWidget* surface() const { return examiner().getRenderWidget(); }
    QPoint middle() const { return surface()->rect().center(); }
    SbRotation orientation() const { return examiner().getCamera()->orientation.getValue(); }
    int chosen() const { return viewer->getSelectionNode()->getNumSelected(); }
    void drag(const QPoint& way)
    {
        QTest::mousePress(surface(), Qt::LeftButton, Qt::NoModifier, middle());
        QMouseEvent move(QEvent::MouseMove, middle() + way, surface()->mapToGlobal(middle() + way),
                         Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(surface(), &move);
        QTest::mouseRelease(surface(), Qt::LeftButton, Qt::NoModifier, middle() + way);
    }
};

} // namespace

TEST_F(OneMode, ClicksChooseAndDragsTurn)
{
    EXPECT_TRUE(examiner().isViewing());
    const SbRotation before = orientation();
    QTest::mouseClick(surface(), Qt::LeftButton, Qt::NoModifier, middle());
    support::flush();
    EXPECT_EQ(chosen(), 1);
    EXPECT_EQ(orientation(), before);
    const QTreeWidgetItem* item = tree()->currentItem();
    drag(QPoint(40, 10));
    support::flush();
    EXPECT_FALSE(orientation().equals(before, 0.01f));
    EXPECT_EQ(tree()->currentItem(), item);
    EXPECT_EQ(chosen(), 1);
    QTest::mouseClick(surface(), Qt::LeftButton, Qt::NoModifier, QPoint(2, 2));
    support::flush();
    EXPECT_EQ(chosen(), 0) << "a click on nothing";
    // What is chosen fills the view.
    QTest::mouseClick(surface(), Qt::LeftButton, Qt::NoModifier, middle());
    examiner().getGuiViewer()->setSeekTime(0);
    const float distance = examiner().getCamera()->focalDistance.getValue();
    examiner().getCamera()->focalDistance = distance * 10;
    QTest::keyClick(surface(), Qt::Key_F);
    EXPECT_LT(examiner().getCamera()->focalDistance.getValue(), distance * 2);
}

TEST_F(OneMode, KeepsHowTheUserMovesAbout)
{
    const auto choose = [this](const char* name) {
        auto* action = examiner().getWidget()->findChild<QAction*>(QLatin1String(name));
        ASSERT_TRUE(action) << name;
        action->trigger();
    };
    choose("viewerModellingScheme");
    choose("viewerTurntable");
    choose("viewerSpin");
    choose("viewerSamples2");
    viewer->saveWindowSettings();
    SoMiraboImpl::stop();
    int count = 1;
    char name[] = "mirabo";
    char* arguments[] = {name, nullptr};
    SoMiraboImpl::startStandalone(count, arguments);
    viewer = SoMiraboViewer::instance();
    const SoGuiExaminerViewer& gui = *examiner().getGuiExaminerViewer();
    EXPECT_EQ(gui.getNavigationScheme(), SoGuiViewer::MODELLING);
    EXPECT_EQ(gui.getTurning(), SoGuiExaminerViewer::TURNTABLE);
    EXPECT_FALSE(gui.isSpinningAllowed());
    EXPECT_EQ(examiner().getNumSamples(), 2);
}
