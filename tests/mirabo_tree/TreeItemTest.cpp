#include "TreeTestScene.h"

#include "mirabo/preferences/Settings.h"
#include "mirabo/tree/HelpAddress.h"
#include "mirabo/tree/NodeCategory.h"
#include "support/Passes.h"

#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/nodes/SoSwitch.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <QBrush>
#include <QImage>
#include <QSettings>
#include <QTemporaryDir>

#include <map>

using mirabo::NodeCategory;

namespace {

QString text(const SoTreeViewItem* item, int column)
{
    return item->data(column, Qt::DisplayRole).toString();
}

bool hasIcon(const SoTreeViewItem* item, int column)
{
    return !item->data(column, Qt::DecorationRole).value<QIcon>().isNull();
}

} // namespace

TEST_F(TreeTest, ShowsTypeNameAndReferences)
{
    auto* cube = new SoCube;
    cube->setName("box");
    root->addChild(cube);
    root->addChild(cube);
    const SoTreeViewItem* item = row(cube);
    EXPECT_EQ(text(item, SoTreeViewItem::Type), "Cube");
    EXPECT_EQ(text(item, SoTreeViewItem::Name), "box");
    EXPECT_EQ(text(item, SoTreeViewItem::ReferenceCount), "2");
    EXPECT_EQ(item->data(1, Qt::ForegroundRole).value<QBrush>().color(), QColor(0, 128, 0));
    EXPECT_EQ(item->kind(), 1001);
    EXPECT_FALSE(item->isPart());
    EXPECT_EQ(item->getPartNumber(), -1);
    cube->setName("other");
    EXPECT_EQ(text(item, SoTreeViewItem::Name), "other");
}

TEST_F(TreeTest, LeavesTheIndexWhileARowIsRemovedByHand)
{
    auto* group = new SoGroup;
    auto* cube = new SoCube;
    group->addChild(cube);
    root->addChild(group);
    root->addChild(new SoMaterial);
    SoTreeViewItem* item = row(group);
    view.rootItem()->removeChildItem(item);
    EXPECT_EQ(rowsOf(group) + rowsOf(cube), 0);
    EXPECT_EQ(view.rootItem()->childItem(0)->childIndexValue(), 0);
    view.rootItem()->addChildItem(item);
    EXPECT_EQ(rowsOf(cube), 1);
    EXPECT_EQ(item->childIndexValue(), 1);
    view.rootItem()->removeChildItem(item);
    delete item;
    group->touch();
    root->touch(); // found missing
    EXPECT_EQ(check(), "");
}

TEST_F(TreeTest, CountsVrmlNodesAsTheSettingsSay)
{
    const SoRef<SoVRMLGroup> group(new SoVRMLGroup); // one reference of ours
    root->addChild(group.get());
    const SoTreeViewItem* item = row(group.get());
    EXPECT_EQ(text(item, SoTreeViewItem::ReferenceCount), "1");
    view.context().realVrmlCounter = true;
    EXPECT_EQ(text(item, SoTreeViewItem::ReferenceCount), "2");
}

TEST_F(TreeTest, MarksTheOccurrencesOfSharedNodesOnly)
{
    auto* shared = new SoCube;
    auto* single = new SoMaterial;
    for (SoNode* node :
         {static_cast<SoNode*>(shared), static_cast<SoNode*>(single), static_cast<SoNode*>(shared)})
        root->addChild(node);
    const auto marks = [this](int i) {
        return hasIcon(view.rootItem()->childItem(i), SoTreeViewItem::ReferenceMark);
    };
    view.showReferences(row(shared));
    EXPECT_TRUE(marks(0) && !marks(1) && marks(2));
    root->addChild(shared); // one more occurrence is one more mark
    pass();
    EXPECT_TRUE(marks(3));
    view.showReferences(row(single));
    EXPECT_FALSE(marks(0) || marks(1) || marks(2));
    view.showReferences(nullptr);
    EXPECT_FALSE(view.hasMarkedReferences());
}

TEST_F(TreeTest, WalksTheOccurrencesInTreeOrderAndAround)
{
    auto* shared = new SoCube;
    std::vector<SoGroup*> groups;
    for (int i = 0; i < 3; ++i)
        groups.push_back(new SoGroup);
    for (const int i : {2, 0, 1}) // not in the order in which rows are made
        groups[static_cast<std::size_t>(i)]->addChild(shared);
    for (SoGroup* group : groups)
        root->addChild(group);
    view.setCurrentItem(row(shared));
    QString hint;
    QObject::connect(&view, &SoMiraboTreeView::statusHint, [&hint](const QString& h) { hint = h; });
    for (const int expected : {1, 2, 0}) {
        view.nextReference();
        EXPECT_TRUE(hint.startsWith(QString("Place %1 of 3 of Cube").arg(expected + 1)));
        EXPECT_EQ(asRow(view.currentItem())->getParentNode(),
                  groups[static_cast<std::size_t>(expected)]);
    }
    view.previousReference();
    EXPECT_EQ(asRow(view.currentItem())->getParentNode(), groups[2]);
    // What is marked is walked through, wherever the user is.
    view.showReferences(row(shared));
    view.setCurrentItem(view.rootItem());
    view.nextReference();
    EXPECT_EQ(asRow(view.currentItem())->getParentNode(), groups[0]);
}

TEST_F(TreeTest, SortsTypesIntoCategories)
{
    EXPECT_EQ(mirabo::categoryOf(SoSelection::getClassTypeId()), NodeCategory::Selection);
    EXPECT_EQ(mirabo::categoryOf(SoSwitch::getClassTypeId()), NodeCategory::Switch);
    EXPECT_EQ(mirabo::categoryOf(SoTransform::getClassTypeId()), NodeCategory::Transform);
    EXPECT_EQ(mirabo::categoryOf(SoVRMLGroup::getClassTypeId()), NodeCategory::Group);
    EXPECT_EQ(mirabo::categoryOf(FieldHolder::getClassTypeId()), NodeCategory::Property);
    EXPECT_TRUE(mirabo::categoryIcon(NodeCategory::Dragger).isNull());
    EXPECT_FALSE(mirabo::categoryIcon(NodeCategory::Unknown).isNull());
    for (int bit = 1; bit <= static_cast<int>(NodeCategory::Transform); bit *= 2)
        EXPECT_FALSE(mirabo::categoryIcon(static_cast<NodeCategory>(bit)).isNull()) << bit;
}

TEST_F(TreeTest, GivesNodesOfFieldsTheirOwnFont)
{
    auto* holder = new FieldHolder;
    root->addChild(holder);
    auto* inner = new SoGroup;
    auto* cube = new SoCube;
    inner->addChild(cube);
    holder->one = inner;
    const QFont itself = view.context().styles.type.font;
    const QFont other = view.context().styles.fieldNode.font;
    const auto fontOf = [this](const SoNode* node) {
        return row(node)->data(0, Qt::FontRole).value<QFont>();
    };
    EXPECT_EQ(fontOf(holder), itself);
    EXPECT_EQ(fontOf(inner), other);
    EXPECT_EQ(fontOf(cube), other);
    view.context().styles.fieldNode.show = false;
    EXPECT_EQ(fontOf(cube), itself);
}

TEST(TreePreferences, HideColumnsAndChangeFonts)
{
    const QTemporaryDir folder;
    mirabo::releaseSettings();
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
    mirabo::StyleTable styles = mirabo::defaultTreeStyles();
    SoMiraboTreeView view;
    EXPECT_FALSE(view.isColumnHidden(SoTreeViewItem::Name));
    for (auto& [element, style] : styles.entries()) {
        style.show = element == "Node Type" || element == "Reference Count";
        style.font.setPointSize(23);
    }
    mirabo::writeStyles(mirabo::kTreeGroup, styles);
    mirabo::writeRealVrmlCounter(true);
    view.setPreferences();
    EXPECT_TRUE(view.isColumnHidden(SoTreeViewItem::Name));
    EXPECT_EQ(view.context().styles.type.font.pointSize(), 23);
    EXPECT_FALSE(view.context().styles.fieldNode.show);
    EXPECT_TRUE(view.context().realVrmlCounter);
    mirabo::releaseSettings();
}

TEST(TreePreferences, PaintEveryTextInItsOwnStyle)
{
    const QTemporaryDir folder;
    mirabo::releaseSettings();
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
    mirabo::StyleTable styles = mirabo::defaultTreeStyles();
    const std::map<QString, QColor> colors{{"Node Type", {250, 100, 10}},
                                           {"Node/Part Name", {10, 140, 250}},
                                           {"Reference Count", {200, 20, 180}},
                                           {"Node From Field", {120, 170, 30}}};
    const SoRef<SoGroup> root(new SoGroup);
    root->setName("HHH");
    auto* holder = new FieldHolder;
    holder->one = new SoCube;
    root->addChild(holder);
    SoMiraboTreeView view;
    view.setSceneGraph(root.get());
    view.expandAll();
    view.setCurrentItem(nullptr);
    view.resize(900, 300);
    const auto shown = [&] {
        view.setPreferences();
        support::flush();
        QStringList elements;
        const QImage image = view.grab().toImage();
        for (const auto& [element, color] : colors)
            for (int i = 0; i < image.width() * image.height(); ++i)
                if (image.pixelColor(i % image.width(), i / image.width()) == color) {
                    elements << element;
                    break;
                }
        return elements;
    };
    EXPECT_EQ(shown(), QStringList());
    for (auto& [element, style] : styles.entries()) {
        style.color = colors.at(element);
        style.font.setPointSize(20);
        style.font.setBold(true);
    }
    mirabo::writeStyles(mirabo::kTreeGroup, styles);
    EXPECT_EQ(shown().size(), 4);
    for (auto& [element, style] : styles.entries())
        style.show = element == "Node From Field";
    mirabo::writeStyles(mirabo::kTreeGroup, styles);
    EXPECT_EQ(shown(), QStringList("Node From Field"));
    mirabo::releaseSettings();
}

TEST(TreeHelp, NamesThePageOfAClass)
{
    EXPECT_EQ(mirabo::helpPageName("Separator"), "_so_separator");
    EXPECT_EQ(mirabo::helpPageName("PoLabel"), "_po_label");
    EXPECT_EQ(mirabo::helpPageName("MoMesh"), "_mo_mesh");
    EXPECT_EQ(mirabo::helpPageName("Coordinate3"), "_so_coordinate3");
    EXPECT_TRUE(
        mirabo::helpAddress("Cube").toString().endsWith("/APIS/RefManCpp/class_so_cube.html"));
}
