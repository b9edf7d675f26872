#include "OverviewSupport.h"

#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoNodeOverview.h"
#include "mirabo/overview/SoNodeOverviewList.h"
#include "mirabo/overview/SoTabNodeOverview.h"
#include "mirabo/preferences/Settings.h"

#include <kalmyr/nodekits/SoShapeKit.h>
#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/shapes/SoCone.h>
#include <kalmyr/shapes/SoCube.h>

#include <QCheckBox>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabBar>
#include <QTest>
#include <QToolButton>

namespace {

using NodeOverviewTest = OverviewTest;
using List = SoMiraboList;

template <class Widget>
Widget* part(const QWidget& panel, const char* name)
{
    auto* widget = panel.findChild<Widget*>(name);
    EXPECT_NE(widget, nullptr) << name;
    return widget;
}

QString label(const QWidget& panel, const char* name)
{
    return part<QLabel>(panel, name)->text();
}

} // namespace

TEST_F(NodeOverviewTest, ShowsWhoANodeIs)
{
    m_probe->setName(SbName("probe"));
    SoNodeOverview panel;
    EXPECT_EQ(label(panel, "m_nodeNameLabel"), "<b> Node Name </b>: ");
    EXPECT_EQ(label(panel, "m_nodeIdLabel"), "<b> Node Id </b>: ");
    panel.setNode(m_probe.get(), nullptr);
    EXPECT_EQ(label(panel, "m_nodeNameLabel"), "<b> Node Name </b>:");
    EXPECT_EQ(part<QLineEdit>(panel, "m_nodeNameValue")->text(), "probe");
    EXPECT_EQ(label(panel, "m_nodeIdLabel"),
              QString("<b> Node Id </b>: %1").arg(m_probe->getNodeId()));
    EXPECT_EQ(label(panel, "m_adressLabel"),
              QString("<b> Node Address </b>: 0x%1")
                  .arg(reinterpret_cast<quintptr>(m_probe.get()), 0, 16));
    EXPECT_EQ(panel.findChild<QLabel*>("m_nodeNetNameLabel"), nullptr);
    EXPECT_EQ(panel.findChild<QPushButton*>("m_closeButton"), nullptr);
    EXPECT_EQ(m_probe->getRefCount(), 1);

    panel.clear();
    EXPECT_EQ(panel.getNode(), nullptr);
    EXPECT_EQ(part<QLineEdit>(panel, "m_nodeNameValue")->text(), "");
    EXPECT_EQ(label(panel, "m_adressLabel"), "<b> Node Address </b>: ");
    EXPECT_EQ(panel.getList()->topLevelItemCount(), 0);
}

TEST_F(NodeOverviewTest, ShowsNetNames)
{
    const NetNameScope scope("KMRU_LAUNCH_MIRABO");
    SoNodeOverview panel;
    EXPECT_EQ(label(panel, "m_nodeNetNameLabel"), "<b> Node NetName </b>: ");
    panel.setNode(m_probe.get(), nullptr);
    EXPECT_EQ(label(panel, "m_nodeNetNameLabel"), "<b> Node NetName </b>: &lt No NetName&gt ");
    m_probe->setNetName(SbName("net"));
    panel.setNode(m_probe.get(), nullptr);
    EXPECT_EQ(label(panel, "m_nodeNetNameLabel"), "<b> Node NetName </b>: net");
}

TEST_F(NodeOverviewTest, FollowsOverrideAndIdWhileInView)
{
    const SoRef<SoMaterial> material(new SoMaterial);
    SoNodeOverview panel;
    panel.setNode(material.get(), nullptr);
    show(panel);
    auto* box = part<QCheckBox>(panel, "m_overrideCheckBox");
    EXPECT_TRUE(box->isEnabled());
    material->setOverride(true);
    pass();
    EXPECT_TRUE(box->isChecked());
    EXPECT_EQ(label(panel, "m_nodeIdLabel"),
              QString("<b> Node Id </b>: %1").arg(material->getNodeId()));

    panel.hide();
    material->setOverride(false);
    EXPECT_FALSE(SoSensorManager::isDelaySensorPending());
    show(panel);
    EXPECT_FALSE(box->isChecked());

    // The user's click only asks.
    QSignalSpy spy(&panel, &SoNodeOverview::overrideRequested);
    box->click();
    ASSERT_EQ(spy.count(), 1);
    EXPECT_TRUE(spy.at(0).at(0).toBool());
    EXPECT_FALSE(material->isOverride());

    const SoRef<SoGroup> group(new SoGroup);
    panel.setNode(group.get(), nullptr);
    EXPECT_FALSE(box->isEnabled());
}

TEST_F(NodeOverviewTest, KeepsNothingBelowItsNodeAlive)
{
    const SoRef<SoGroup> group(new SoGroup);
    const SoRef<SoCube> cube(new SoCube);
    group->addChild(cube.get());
    SoNodeOverview panel;
    panel.setNode(group.get(), nullptr);
    show(panel);
    cube->width.setValue(3);
    group->removeChild(0);
    pass();
    EXPECT_EQ(cube->getRefCount(), 1);
}

TEST_F(NodeOverviewTest, RenamesAtEachKey)
{
    SoNodeOverview panel;
    panel.setNode(m_probe.get(), nullptr);
    show(panel);
    QSignalSpy spy(&panel, &SoNodeOverview::nodeRenamed);
    auto* name = part<QLineEdit>(panel, "m_nodeNameValue");
    QTest::keyClicks(name, "ab c");
    EXPECT_EQ(spy.count(), 4);
    EXPECT_STREQ(m_probe->getName().getString(), "ab_c"); // what the toolkit accepts
    EXPECT_EQ(name->text(), "ab_c");
    for (int i = 0; i < panel.getList()->topLevelItemCount(); ++i)
        EXPECT_EQ(panel.getList()->fieldItem(i)->text(List::NodeName), "ab_c");
    name->setCursorPosition(1);
    QTest::keyClicks(name, "1 2");
    EXPECT_EQ(name->text(), "a1_2b_c");
    EXPECT_EQ(name->cursorPosition(), 4);

    const QString foreign = QString::fromUtf8("\xc3\xa9\xe6\x97\xa5");
    name->clear();
    QInputMethodEvent typed;
    typed.setCommitString(foreign);
    QCoreApplication::sendEvent(name, &typed);
    EXPECT_STREQ(m_probe->getName().getString(), "\xc3\xa9\xe6\x97\xa5");
    EXPECT_EQ(name->text(), foreign);
    EXPECT_EQ(panel.getList()->fieldItem(0)->text(List::NodeName), foreign);
}

TEST_F(NodeOverviewTest, ShowsPartsOfKitsByTheirPath)
{
    const SoRef<SoShapeKit> kit(new SoShapeKit);
    SoNode* shape = kit->getPart("shape");
    SoNodeOverview panel;
    panel.setNode(shape, kit.get());
    EXPECT_EQ(label(panel, "m_nodeNameLabel"), "<b> Part Name </b>:");
    auto* name = part<QLineEdit>(panel, "m_nodeNameValue");
    EXPECT_EQ(name->text(), "shape");
    EXPECT_TRUE(name->isReadOnly());
    panel.setNode(m_probe.get(), kit.get()); // no part of it
    EXPECT_EQ(label(panel, "m_nodeNameLabel"), "<b> Node Name </b>:");
    EXPECT_FALSE(name->isReadOnly());
}

TEST_F(NodeOverviewTest, StartsEveryNodeWithAllItsFields)
{
    SoNodeOverview panel;
    panel.setNode(m_probe.get(), nullptr);
    auto* box = part<QCheckBox>(panel, "m_showChangedCheckBox");
    box->setChecked(true);
    EXPECT_TRUE(panel.getList()->fieldItem(0)->isHidden());
    const SoRef<SoCone> cone(new SoCone);
    panel.setNode(cone.get(), nullptr);
    EXPECT_FALSE(box->isChecked());
    EXPECT_FALSE(panel.getList()->fieldItem(0)->isHidden());
    EXPECT_FALSE(panel.getList()->isShowingChangedOnly());
}

TEST_F(NodeOverviewTest, KeepsTheLastTabAndAnnouncesTheRowOfTheCurrentOne)
{
    SoTabNodeOverview tabs;
    show(tabs);
    EXPECT_EQ(tabs.count(), 1);
    const auto closeButton = [&tabs](int index) {
        return qobject_cast<QToolButton*>(tabs.tabBar()->tabButton(index, QTabBar::RightSide));
    };
    EXPECT_FALSE(closeButton(0)->isVisible());
    tabs.tabClose(0);
    tabs.tabClose(-1);
    EXPECT_EQ(tabs.count(), 1);

    tabs.currentOverview()->setNode(m_probe.get(), nullptr);
    tabs.currentOverview()->getList()->chooseRow(tabs.currentOverview()->getList()->fieldItem(0));
    QTreeWidgetItem* chosen = tabs.currentListItem();
    ASSERT_NE(chosen, nullptr);
    QSignalSpy spy(&tabs, &SoTabNodeOverview::currentRowChanged);
    tabs.addOverview();
    EXPECT_EQ(tabs.currentIndex(), 1);
    ASSERT_TRUE(closeButton(0)->isVisible() && closeButton(1)->isVisible());
    EXPECT_EQ(spy.last().at(0).value<QTreeWidgetItem*>(), nullptr);
    EXPECT_EQ(tabs.indexOfNode(m_probe.get()), 0);

    // The middle button closes.
    QTest::mouseClick(tabs.tabBar(), Qt::MiddleButton, {}, tabs.tabBar()->tabRect(1).center());
    EXPECT_EQ(tabs.count(), 1);
    EXPECT_EQ(spy.last().at(0).value<QTreeWidgetItem*>(), chosen);
    tabs.addOverview();
    closeButton(0)->click();
    EXPECT_EQ(tabs.count(), 1);
    EXPECT_EQ(tabs.indexOfNode(m_probe.get()), -1);
}

TEST_F(NodeOverviewTest, HidesAColumnInEveryTabAndForTheNextStart)
{
    {
        SoTabNodeOverview tabs;
        tabs.addOverview();
        List* list = tabs.currentOverview()->getList();
        EXPECT_EQ(list->columnWidth(List::NodeType), 0); // closed until somebody opens it
        EXPECT_EQ(list->columnWidth(List::NodeName), 0);
        EXPECT_EQ(list->columnWidth(List::Ignored), 20);
        list->setColumnWidth(List::FieldTypeColumn, 0);
        list->setColumnWidth(List::Ignored, 33);
        list->setColumnWidth(List::NodeName, 120);
        EXPECT_EQ(tabs.overview(0)->getList()->columnWidth(List::FieldTypeColumn), 0);
        EXPECT_EQ(tabs.overview(0)->getList()->columnWidth(List::NodeName), 120);
        tabs.addOverview();
        EXPECT_EQ(tabs.currentOverview()->getList()->columnWidth(List::NodeName), 120);
    }
    mirabo::releaseSettings();
    using mirabo::readListColumnWidth;
    EXPECT_EQ(readListColumnWidth(mirabo::kNodeOverviewGroup, 0), 33);
    EXPECT_EQ(readListColumnWidth(mirabo::kNodeOverviewGroup, 3), -1);
    EXPECT_EQ(readListColumnWidth(mirabo::kNodeOverviewGroup, 4), 0);
    SoTabNodeOverview again;
    const List* list = again.currentOverview()->getList();
    EXPECT_EQ(list->columnWidth(List::Ignored), 33);
    EXPECT_GT(list->columnWidth(List::NodeName), 0);
    EXPECT_EQ(list->columnWidth(List::FieldTypeColumn), 0);
}

TEST_F(NodeOverviewTest, NamesThePlacesAnewWhenANodeAboveIsRenamed)
{
    SoTabNodeOverview tabs;
    const SoRef<SoCone> above(new SoCone);
    tabs.setPlaceProvider([&](const SoNode*) { return QString(above->getName().getString()); });
    tabs.currentOverview()->setNode(m_probe.get(), nullptr);
    tabs.showTabTitle(0, {});
    above->setName("wheel");
    tabs.nodeRenamed(above.get());
    EXPECT_EQ(tabs.tabToolTip(0), "wheel");
}

TEST_F(NodeOverviewTest, TellsTheTabsOfADeadNode)
{
    SoTabNodeOverview tabs;
    tabs.setPlaceProvider([](const SoNode*) { return QString("Root > Probe"); });
    tabs.currentOverview()->setNode(m_probe.get(), nullptr);
    tabs.showTabTitle(0, {});
    EXPECT_EQ(tabs.tabText(0), "Probe");
    EXPECT_EQ(tabs.tabToolTip(0), "Root &gt; Probe");
    tabs.addOverview(); // the other one is out of sight now
    show(tabs);
    m_probe = nullptr;

    EXPECT_EQ(tabs.tabText(0), "Probe (deleted)");
    const SoNodeOverview* dead = tabs.overview(0);
    EXPECT_TRUE(dead->isNodeDead());
    EXPECT_EQ(dead->getNode(), nullptr);
    auto* name = part<QLineEdit>(*dead, "m_nodeNameValue");
    EXPECT_EQ(name->text(), "(deleted)");
    EXPECT_FALSE(name->isEnabled());
    EXPECT_FALSE(part<QCheckBox>(*dead, "m_overrideCheckBox")->isEnabled());
    EXPECT_EQ(value(*dead->getList(), "number"), "1.5");
    QHelpEvent tip(QEvent::ToolTip, tabs.tabBar()->tabRect(0).center(), QPoint());
    QCoreApplication::sendEvent(tabs.tabBar(), &tip);

    const SoRef<SoCone> cone(new SoCone);
    tabs.setCurrentIndex(0);
    tabs.currentOverview()->setNode(cone.get(), nullptr);
    tabs.showTabTitle(0, {});
    EXPECT_EQ(tabs.tabText(0), "Cone");
    EXPECT_FALSE(tabs.currentOverview()->isNodeDead());
    EXPECT_TRUE(name->isEnabled());
    tabs.reset();
    EXPECT_EQ(tabs.count(), 1);
    EXPECT_EQ(tabs.tabText(0), "");
}

TEST_F(NodeOverviewTest, AppliesStoredStylesAndParts)
{
    mirabo::StyleTable styles = mirabo::defaultFieldStyles();
    mirabo::TextStyle changed = styles["Changed Value"];
    changed.color = Qt::blue;
    styles.set("Changed Value", changed);
    mirabo::writeStyles(mirabo::kNodeOverviewGroup, styles);
    SoTabNodeOverview tabs;
    EXPECT_EQ(tabs.currentOverview()->getList()->valueColor(true), QColor(Qt::blue));
    EXPECT_FALSE(tabs.currentOverview()->getList()->isShowingCatalogParts());
    tabs.setShowCatalogParts(true);
    EXPECT_TRUE(mirabo::readShowCatalogPart());
    tabs.addOverview();
    EXPECT_TRUE(tabs.currentOverview()->getList()->isShowingCatalogParts());
}
