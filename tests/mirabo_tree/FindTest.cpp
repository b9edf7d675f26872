#include "TreeTestScene.h"

#include "mirabo/core/SoCommandManager.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/preferences/Settings.h"
#include "mirabo/tree/MrbFindDialog.h"
#include "mirabo/tree/TreeFinder.h"
#include "mirabo/tree/TreeNavigator.h"
#include "mirabo/tree/TypedSearch.h"

#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoCube.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDockWidget>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <climits>

using mirabo::ActionId;
using mirabo::TreeFinder;

namespace {

/// A window with a tree in it:
/// root
///   group "Wheel" (material, cube "Hub")
///   cube
///   group "wheel_2" (cube)
class FindTest : public ::testing::Test {
protected:
    FindTest()
    {
        SoDB::init();
        mirabo::releaseSettings();
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_folder.path());
        frame.setUp(&hub, true);
        auto* dock = new QDockWidget(&frame);
        tree = new SoMiraboTreeView(dock);
        dock->setWidget(tree);
        frame.addDockWidget(Qt::LeftDockWidgetArea, dock);
        searchBox = frame.findChild<QComboBox*>("SearchBox");
        navigator = new mirabo::TreeNavigator(tree, searchBox, &hub);
        navigator->setSceneNamer([this] { return scene; });
        hub.setUp(&frame, nullptr, tree, nullptr);
        show(makeScene());
        frame.resize(900, 500);
        frame.show();
        frame.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&frame));
    }
    ~FindTest() override
    {
        hub.release();
        mirabo::releaseSettings();
    }

    static SoRef<SoGroup> makeScene()
    {
        const SoRef<SoGroup> root(new SoGroup);
        for (const char* name : {"Wheel", "wheel_2"}) {
            auto* group = new SoSeparator;
            group->setName(name);
            if (root->getNumChildren() == 0) {
                group->addChild(new SoMaterial);
                root->addChild(group);
                root->addChild(new SoCube);
            } else {
                root->addChild(group);
            }
            group->addChild(new SoCube);
        }
        static_cast<SoGroup*>(root->getChild(0))->getChild(1)->setName("Hub");
        return root;
    }
    void show(const SoRef<SoGroup>& newRoot)
    {
        tree->setSceneGraph(newRoot.get());
        root = newRoot;
        QCoreApplication::processEvents();
    }
    SoNode* node(int child, int below = -1) const
    {
        SoNode* at = root->getChild(child);
        return below < 0 ? at : static_cast<SoGroup*>(at)->getChild(below);
    }
    SoTreeViewItem* row(const SoNode* of) const
    {
        const auto items = tree->occurrencesOf(of);
        return items.empty() ? nullptr : items.front();
    }
    void makeCurrent(const SoNode* of) { tree->setCurrentItem(row(of)); }
    const SoNode* current() const { return tree->getCurrentNode(); }
    SoTreeViewItem* search(const TreeFinder::Query& query, SoTreeViewItem* start)
    {
        TreeFinder finder(*tree, query, start);
        finder.look(INT_MAX);
        return finder.found();
    }
    SoNode* found(int kind, const QString& text, unsigned options = 0)
    {
        SoTreeViewItem* item =
            search({kind, text, options}, static_cast<SoTreeViewItem*>(tree->currentItem()));
        return item ? item->getNode() : nullptr;
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(&frame, key, modifiers);
        QCoreApplication::processEvents(); // actions follow
    }
    template <class W>
    W* control(const QString& text) const
    {
        for (W* one : navigator->dialog()->findChildren<W*>())
            if (one->text() == text)
                return one;
        return nullptr;
    }
    /// Lets the search go on to its end.
    void finishTyping()
    {
        const auto* typed = tree->findChild<mirabo::TypedSearch*>();
        for (int i = 0; typed->isRunning() && i < 10000; ++i)
            QCoreApplication::processEvents();
        EXPECT_FALSE(typed->isRunning());
    }

    QTemporaryDir m_folder;
    QString scene;
    SoRef<SoGroup> root;
    SoCommandManager hub;
    SoMiraboMainFrame frame;
    SoMiraboTreeView* tree;
    QComboBox* searchBox;
    mirabo::TreeNavigator* navigator;
};

TEST_F(FindTest, ComparesTypeNameAddressAndId)
{
    makeCurrent(root.get());
    EXPECT_EQ(found(0, "cub"), node(0, 1));
    EXPECT_EQ(found(0, "cub", TreeFinder::Backward), node(2, 0));
    EXPECT_EQ(found(0, "cub", TreeFinder::CaseSensitive), nullptr);
    EXPECT_EQ(found(0, "cub", TreeFinder::ExactMatch), nullptr);
    EXPECT_EQ(found(0, "cube", TreeFinder::ExactMatch), node(0, 1));
    EXPECT_EQ(found(1, "WHEEL"), node(0));
    EXPECT_EQ(found(1, "wheel", TreeFinder::CaseSensitive), node(2));
    EXPECT_EQ(found(1, "HEEL_2", TreeFinder::Backward), node(2));
    EXPECT_EQ(found(1, QString()), nullptr);
    EXPECT_EQ(found(1, QString(), TreeFinder::ExactMatch), node(0, 0)) << "the first without name";
    const QString address = "0x" + QString::number(reinterpret_cast<quintptr>(node(2, 0)), 16);
    EXPECT_EQ(found(2, address, TreeFinder::ExactMatch), node(2, 0));
    EXPECT_EQ(found(2, address.toUpper()), node(2, 0));
    EXPECT_EQ(found(2, address.toUpper(), TreeFinder::CaseSensitive), nullptr);
    EXPECT_EQ(found(3, QString::number(node(1)->getNodeId()), TreeFinder::ExactMatch), node(1));
    EXPECT_EQ(found(7, "cube"), nullptr);

    node(1)->setName("Stra\xC3\x9F"
                     "E_\xC3\x84x");
    EXPECT_EQ(found(1, QString::fromUtf8("STRA\xC3\x9F"
                                         "e_\xC3\xA4X")),
              node(1));
    EXPECT_EQ(found(1, QString::fromUtf8("\xC3\xA4x"), TreeFinder::CaseSensitive), nullptr);
}

TEST_F(FindTest, GoesAroundTheEndOnceAndVisitsTheCurrentRowLast)
{
    makeCurrent(node(0, 1));
    EXPECT_EQ(found(0, "Cube"), node(1));
    EXPECT_EQ(found(0, "Cube", TreeFinder::Backward), node(2, 0));
    makeCurrent(node(2, 0));
    EXPECT_EQ(found(0, "Cube"), node(0, 1));
    makeCurrent(node(0, 0));
    EXPECT_EQ(found(0, "Material"), node(0, 0));
    EXPECT_EQ(found(0, "Material", TreeFinder::Backward), node(0, 0));
    EXPECT_EQ(found(0, "Cone"), nullptr);
    tree->setCurrentItem(nullptr);
    EXPECT_EQ(found(0, "Cube", TreeFinder::Backward), node(0 + 1)) << "from the last row";
    tree->setSceneGraph(nullptr);
    EXPECT_EQ(found(0, "Cube"), nullptr);
    EXPECT_EQ(found(0, "", TreeFinder::ExactMatch), nullptr);
}

TEST_F(FindTest, VisitsEveryRowOnceWhateverTheSlices)
{
    for (const unsigned options : {0u, unsigned(TreeFinder::Backward)})
        for (const SoNode* start : {node(0, 1), node(2, 0), static_cast<SoNode*>(root.get())})
            for (const int slice : {1, 2, 3, INT_MAX}) {
                // Nothing fits; the last row visited is the start.
                TreeFinder none(*tree, {0, "nothing", options}, row(start));
                int looks = 1;
                while (none.look(slice) == TreeFinder::State::Searching && looks < 100)
                    ++looks;
                EXPECT_EQ(looks, slice == INT_MAX ? 1 : 7 / slice + 1);
                TreeFinder cube(*tree, {0, "Cube", options}, row(start));
                while (cube.look(slice) == TreeFinder::State::Searching) {
                }
                EXPECT_EQ(cube.found(), search({0, "Cube", options}, row(start)));
            }
}

TEST_F(FindTest, GoesOnWhenRowsCameOrWentBetweenSlices)
{
    TreeFinder finder(*tree, {0, "Sphere", 0}, row(root.get()));
    EXPECT_EQ(finder.look(3), TreeFinder::State::Searching);
    root->removeAllChildren();
    EXPECT_EQ(finder.look(3), TreeFinder::State::NotFound);
    TreeFinder other(*tree, {0, "Cube", 0}, row(root.get()));
    for (int i = 0; i < 10; ++i)
        root->addChild(new SoMaterial);
    EXPECT_EQ(other.look(3), TreeFinder::State::Searching);
    root->removeChild(9);
    root->addChild(new SoCube);
    EXPECT_EQ(other.look(100), TreeFinder::State::Found);
    tree->setSceneGraph(nullptr);
    EXPECT_EQ(finder.look(3), TreeFinder::State::NotFound);
}

TEST_F(FindTest, FindsNoNodeThatDiedUnreported)
{
    makeCurrent(root.get());
    const auto address = QString::number(reinterpret_cast<quintptr>(node(0, 1)), 16);
    auto* group = static_cast<SoGroup*>(node(0));
    group->enableNotify(false);
    group->removeChild(1);
    EXPECT_EQ(found(0, "Cube"), node(1));
    EXPECT_EQ(found(1, "Hub"), nullptr);
    EXPECT_EQ(found(1, "", TreeFinder::ExactMatch), node(0, 0));
    EXPECT_EQ(found(2, address), nullptr);
    group->enableNotify(true);
}

TEST_F(FindTest, SearchesFromTheDialog)
{
    makeCurrent(root.get());
    tree->collapseAll();
    frame.action(ActionId::Find)->trigger();
    MrbFindDialog* dialog = navigator->dialog();
    ASSERT_TRUE(QTest::qWaitForWindowActive(dialog));
    auto* edit = dialog->findChild<QComboBox*>();
    EXPECT_EQ(dialog->focusWidget(), edit);
    QTest::keyClicks(edit, "cube");
    QTest::mouseClick(control<QPushButton>("Find"), Qt::LeftButton);
    EXPECT_EQ(current(), node(0, 1));
    EXPECT_TRUE(row(node(0))->isExpanded());
    EXPECT_TRUE(tree->visualItemRect(row(node(0, 1))).isValid());
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_EQ(current(), node(1));
    QTest::keyClick(edit, Qt::Key_F3, Qt::ShiftModifier);
    EXPECT_EQ(current(), node(0, 1));
    QTest::mouseClick(control<QCheckBox>("Backward"), Qt::LeftButton, {}, QPoint(8, 8));
    QTest::mouseClick(control<QRadioButton>("By Name"), Qt::LeftButton, {}, QPoint(8, 8));
    EXPECT_EQ(dialog->kind(), 1);
    EXPECT_EQ(dialog->options(), 1u);
    dialog->setText("wheel");
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_EQ(current(), node(0));
    hub.findNext();
    EXPECT_EQ(current(), node(2)) << "find next takes no notice of the box";
    dialog->setText("nothing");
    hub.find();
    EXPECT_EQ(current(), node(2));

    // What is typed in the tool bar counts only while the dialog is hidden.
    searchBox->lineEdit()->setText("Hub");
    hub.find();
    EXPECT_EQ(current(), node(2));
    QTest::mouseClick(control<QPushButton>("Close"), Qt::LeftButton);
    EXPECT_FALSE(dialog->isVisible());
    hub.findNext();
    EXPECT_EQ(current(), node(0, 1)) << "the kind stays that of the dialog";

    frame.action(ActionId::Find)->trigger();
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(edit->lineEdit()->selectedText(), "nothing");
    dialog->setKind(9);
    EXPECT_EQ(dialog->kind(), 1);
}

TEST_F(FindTest, FindsWhileTypingFromWhereTheTypingBegan)
{
    makeCurrent(node(0, 1));
    QComboBox* edit = searchBox; // has the keys, the line in it is its proxy
    edit->setFocus();
    QTest::keyClicks(edit, "c");
    QTest::keyClicks(edit, "u");
    EXPECT_EQ(current(), node(0, 1)) << "not before the event loop has time for it";
    finishTyping();
    EXPECT_EQ(current(), node(0, 1)) << "it fits itself";
    QTest::keyClick(edit, Qt::Key_Backspace);
    QTest::keyClick(edit, Qt::Key_Backspace);
    QTest::keyClicks(edit, "sep");
    finishTyping();
    EXPECT_EQ(current(), node(2));
    QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(edit, "mat");
    finishTyping();
    EXPECT_EQ(current(), node(0, 0));
    QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(edit, "cub");
    finishTyping();
    EXPECT_EQ(current(), node(0, 1)) << "from the first row again, not from the last find";
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_EQ(current(), node(1));
    EXPECT_EQ(searchBox->itemText(0), "cub");

    // A new typing begins where the last one ended; no search runs while the dialog is shown.
    QTest::keyClicks(edit, "e");
    finishTyping();
    EXPECT_EQ(current(), node(1));
    hub.showFindDialog();
    edit->setFocus();
    QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(edit, "group");
    EXPECT_FALSE(tree->findChild<mirabo::TypedSearch*>()->isRunning());
    QCoreApplication::processEvents();
    EXPECT_EQ(current(), node(1));
}

TEST_F(FindTest, StopsATypedSearchAtTheNextKey)
{
    SoGroup* group = static_cast<SoGroup*>(node(2));
    for (int i = 0; i < 100000; ++i)
        group->addChild(new SoMaterial);
    group->addChild(new SoCube);
    QCoreApplication::processEvents();
    makeCurrent(node(2, 1));
    QComboBox* edit = searchBox; // has the keys, the line in it is its proxy
    edit->setFocus();
    const auto* typed = tree->findChild<mirabo::TypedSearch*>();
    QTest::keyClicks(edit, "cub");
    QCoreApplication::processEvents();
    EXPECT_TRUE(typed->isRunning());
    EXPECT_EQ(current(), node(2, 1));
    QTest::keyClicks(edit, "x");
    finishTyping();
    EXPECT_EQ(current(), node(2, 1));
    QTest::keyClick(edit, Qt::Key_Backspace);
    finishTyping();
    EXPECT_EQ(current(), node(2, 100001));
}

TEST_F(FindTest, WalksFromBookmarkToBookmark)
{
    tree->setFocus();
    EXPECT_EQ(row(node(1))->icon(SoTreeViewItem::Bookmark).isNull(), true);
    for (const SoNode* marked : {node(0, 1), node(1), node(2, 0)}) {
        makeCurrent(marked);
        press(Qt::Key_F2, Qt::ControlModifier);
    }
    EXPECT_FALSE(row(node(1))->icon(SoTreeViewItem::Bookmark).isNull());
    tree->collapseAll();
    press(Qt::Key_F2);
    EXPECT_EQ(current(), node(0, 1)) << "the current one is left, around the end";
    EXPECT_TRUE(row(node(0))->isExpanded());
    press(Qt::Key_F2);
    EXPECT_EQ(current(), node(1));
    press(Qt::Key_F2, Qt::ShiftModifier);
    press(Qt::Key_F2, Qt::ShiftModifier);
    EXPECT_EQ(current(), node(2, 0));
    press(Qt::Key_F2, Qt::ControlModifier);
    press(Qt::Key_F2, Qt::ShiftModifier);
    EXPECT_EQ(current(), node(1));
    press(Qt::Key_F2, Qt::AltModifier);
    EXPECT_TRUE(row(node(1))->icon(SoTreeViewItem::Bookmark).isNull());
    press(Qt::Key_F2);
    EXPECT_EQ(current(), node(1));
    press(Qt::Key_F2, Qt::ControlModifier);
    press(Qt::Key_F2);
    EXPECT_EQ(current(), node(1)) << "the only one";
}

TEST_F(FindTest, WalksManyBookmarksInTheOrderOfTheRows)
{
    SoGroup* group = static_cast<SoGroup*>(node(2));
    for (std::size_t i = 0; i < 2 * mirabo::Bookmarks::kFew; ++i)
        group->addChild(new SoMaterial);
    std::vector<SoTreeViewItem*> marked{row(root.get())};
    SoTreeViewItem* parent = row(group);
    for (int i = 0; i < parent->childCount(); i += i < 1200 ? 1 : 7)
        marked.push_back(parent->childItem(i));
    for (const bool few : {false, true}) {
        if (few) {
            tree->context().bookmarks.clear();
            marked.resize(mirabo::Bookmarks::kFew / 2);
        }
        for (SoTreeViewItem* item : marked)
            item->setBookmarked(true);
        SoTreeViewItem* at = marked.front();
        for (std::size_t i = 0; i <= marked.size(); ++i) {
            EXPECT_EQ(at, marked[i % marked.size()]);
            at = tree->context().bookmarks.walkOn(*tree, at, false);
        }
        EXPECT_EQ(tree->context().bookmarks.walkOn(*tree, marked.front(), true), marked.back());
        EXPECT_EQ(tree->context().bookmarks.walk(*tree, marked[1], true), marked[1]);
        EXPECT_EQ(tree->context().bookmarks.walkOn(*tree, row(node(1)), true), marked.front());
        EXPECT_EQ(tree->context().bookmarks.walkOn(*tree, nullptr, true), marked.back());
    }
}

TEST_F(FindTest, KeepsBookmarksOfRowsThatMove)
{
    const SoRef<SoNode> cube(node(1));
    const SoRef<SoNode> hubNode(node(0, 1));
    for (const SoNode* marked : {cube.get(), hubNode.get()}) {
        makeCurrent(marked);
        hub.toggleBookmark();
    }
    const SoRef<SoNode> wheel(node(0));
    root->removeChild(cube.get());
    root->removeChild(wheel.get());
    QCoreApplication::processEvents();
    EXPECT_EQ(tree->context().bookmarks.count(), 0u);
    static_cast<SoGroup*>(node(0))->addChild(cube.get());
    root->addChild(wheel.get());
    QCoreApplication::processEvents();
    EXPECT_TRUE(row(cube.get())->isBookmarked());
    EXPECT_TRUE(row(hubNode.get())->isBookmarked());

    // Another occurrence does not inherit the bookmark of one that went.
    root->addChild(cube.get());
    makeCurrent(cube.get());
    static_cast<SoGroup*>(node(0))->removeChild(cube.get());
    QCoreApplication::processEvents();
    EXPECT_FALSE(row(cube.get())->isBookmarked());
}

TEST_F(FindTest, DropsBookmarksOfNodesThatAreGone)
{
    scene = "/scenes/one.ky";
    show(makeScene());
    makeCurrent(node(0, 1));
    hub.toggleBookmark();
    static_cast<SoGroup*>(node(0))->removeChild(1);
    QCoreApplication::processEvents();
    EXPECT_FALSE(frame.action(ActionId::NextBookmark)->isEnabled());
    show(makeScene()); // read anew, it would be there
    EXPECT_EQ(tree->context().bookmarks.count(), 0u);
    makeCurrent(node(0, 1));
    hub.toggleBookmark();
    auto* group = static_cast<SoGroup*>(node(0));
    group->enableNotify(false);
    group->removeChild(1); // nobody was told
    group->enableNotify(true);
    hub.nextBookmark();
    navigator->saveBookmarks();
    hub.clearBookmark();
    QCoreApplication::processEvents();
    EXPECT_EQ(tree->context().bookmarks.count(), 0u);
}

TEST_F(FindTest, FindsBookmarksAgainWhenTheSceneIsShownAgain)
{
    const auto marked = [this] {
        std::vector<const SoNode*> nodes;
        for (QTreeWidgetItemIterator at(tree); *at; ++at)
            if (static_cast<SoTreeViewItem*>(*at)->isBookmarked())
                nodes.push_back(static_cast<SoTreeViewItem*>(*at)->getNode());
        return nodes;
    };
    scene = "/scenes/one.ky";
    show(makeScene());
    for (const SoNode* one : {node(0, 1), node(1)}) {
        makeCurrent(one);
        hub.toggleBookmark();
    }
    scene = "/scenes/two.ky";
    show(makeScene());
    EXPECT_EQ(marked().size(), 0u);
    makeCurrent(root.get());
    hub.toggleBookmark();

    mirabo::releaseSettings(); // another run
    scene = "/scenes/one.ky";
    const SoRef<SoGroup> changed = makeScene();
    changed->insertChild(new SoMaterial, 0);
    show(changed);
    EXPECT_EQ(marked(), (std::vector<const SoNode*>{node(1, 1), node(2)}));
    hub.clearBookmark();
    scene = "/scenes/two.ky";
    show(makeScene());
    EXPECT_EQ(marked(), std::vector<const SoNode*>{root.get()});
    scene = "/scenes/one.ky";
    show(makeScene());
    EXPECT_EQ(marked().size(), 0u);

    scene.clear(); // nobody knows which scene it is
    show(makeScene());
    makeCurrent(node(1));
    hub.toggleBookmark();
    show(makeScene());
    EXPECT_EQ(marked().size(), 0u);
}

TEST_F(FindTest, ReadsDamagedBookmarksAsNone)
{
    scene = "/scenes/one.ky";
    makeCurrent(node(1));
    hub.toggleBookmark();
    show(makeScene());
    makeCurrent(node(1));
    hub.toggleBookmark();
    navigator->saveBookmarks();
    for (const QString& key : mirabo::settings().allKeys())
        if (key.startsWith("Bookmarks/") && !key.endsWith("Scenes"))
            for (const char* text :
                 {"", "[", "{}", "[[1]]", "[[-5,\"Group\",\"\"]]",
                  "[[0,7,null,99999999,\"Cube\",\"x\"]]", "[1,2,[\"a\",2,{}]]"}) {
                mirabo::settings().setValue(key, text);
                tree->context().bookmarks.clear();
                show(makeScene());
                EXPECT_LE(tree->context().bookmarks.count(), 1u) << text;
                mirabo::settings().setValue(key, text);
            }
}

} // namespace
