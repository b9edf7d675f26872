#include "mirabo/tree/TreeNavigator.h"

#include "mirabo/core/SoCommandManager.h"
#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/extender/private/Later.h"
#include "mirabo/preferences/Settings.h"
#include "mirabo/tree/BookmarkStore.h"
#include "mirabo/tree/MrbFindDialog.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeFinder.h"
#include "mirabo/tree/TreeRows.h"
#include "mirabo/tree/TypedSearch.h"

#include <QComboBox>
#include <QLineEdit>

#include <limits>
#include <utility>

namespace mirabo {

namespace {

/// Puts a text at the head of the list of earlier ones.
void remember(QComboBox& box, const QString& text)
{
    if (text.isEmpty())
        return;
    const int at = box.findText(text, Qt::MatchFixedString | Qt::MatchCaseSensitive);
    if (at == 0)
        return;
    if (at > 0)
        box.removeItem(at);
    box.insertItem(0, text);
    box.setCurrentIndex(0);
}

} // namespace

TreeNavigator::TreeNavigator(SoMiraboTreeView* tree, QComboBox* searchBox, SoCommandManager* hub)
    : QObject(tree),
      m_tree(tree),
      m_hub(hub),
      m_searchBox(searchBox),
      m_dialog(new MrbFindDialog(hub, searchBox->window()))
{
    searchBox->setInsertPolicy(QComboBox::NoInsert); // only what was searched for
    for (QComboBox* box : {searchBox, m_dialog->textBox()}) {
        box->setMaxCount(kHistory);
        box->setCompleter(nullptr); // what is typed is what is found
    }
    m_typed = new TypedSearch(tree, searchBox->lineEdit(), [this](const QString& text) {
        const bool isOn = !text.isEmpty() && m_dialog && !m_dialog->isVisible();
        std::optional<TreeFinder::Query> query;
        if (isOn)
            query = {m_dialog->kind(), text, m_dialog->options() & ~TreeFinder::Backward};
        return query;
    });
    connect(m_typed, &TypedSearch::found, this, &TreeNavigator::goTo);
    connect(m_dialog, &QDialog::finished, tree, [tree] { tree->setFocus(); });

    for (QTimer* timer : {&m_saveLater, &m_findLost}) {
        timer->setParent(this);
        timer->setSingleShot(true);
    }
    connect(&m_saveLater, &QTimer::timeout, this, &TreeNavigator::saveBookmarks);
    connect(&m_findLost, &QTimer::timeout, this, &TreeNavigator::findLostBookmarks);
    connect(tree, &SoMiraboTreeView::rootAboutToChange, this, &TreeNavigator::sceneLeaves);
    connect(tree, &SoMiraboTreeView::rootChanged, this, &TreeNavigator::sceneCame);
    connect(tree, &SoMiraboTreeView::outsideStructureChange, this, [this] {
        if (m_tree->context().bookmarks.hasLost())
            m_findLost.start(0);
    });
    connect(tree, &QTreeWidget::currentItemChanged, this, &TreeNavigator::updateActions);
    registerActions();
}

TreeNavigator::~TreeNavigator()
{
    delete m_dialog;
}

void TreeNavigator::registerActions()
{
    const auto add = [this](ActionId id, std::function<void()> run,
                            std::function<bool()> possible) {
        m_hub->actions().add(id, this, {std::move(run), std::move(possible)});
    };
    const auto hasRows = [this] { return m_tree->rootItem() != nullptr; };
    add(
        ActionId::Find, [this] { showFindDialog(); }, hasRows);
    add(
        ActionId::FindAgain, [this] { find(); }, hasRows);
    add(
        ActionId::FindNext, [this] { find(TreeFinder::Backward); }, hasRows);
    add(
        ActionId::FindPrevious, [this] { find(0, TreeFinder::Backward); }, hasRows);
    const auto hasBookmarks = [this] { return m_tree->context().bookmarks.count() > 0; };
    add(
        ActionId::ToggleBookmark, [this] { toggleBookmark(); },
        [this] { return m_tree->currentItem() != nullptr; });
    add(
        ActionId::NextBookmark, [this] { stepBookmark(false); }, hasBookmarks);
    add(
        ActionId::PreviousBookmark, [this] { stepBookmark(true); }, hasBookmarks);
    add(
        ActionId::ClearBookmarks, [this] { clearBookmarks(); }, hasBookmarks);
}

/// Once a pass, however often it is asked for.
void TreeNavigator::updateActions()
{
    if (m_hub)
        m_hub->actions().updateLater();
}

MrbFindDialog* TreeNavigator::dialog() const
{
    return m_dialog;
}

void TreeNavigator::showFindDialog()
{
    if (!m_dialog)
        return;
    m_typed->stop();
    m_dialog->show();
    m_dialog->raise();
    m_dialog->focusText();
}

QString TreeNavigator::searchText() const
{
    if (m_dialog->isVisible())
        return m_dialog->text();
    return m_searchBox ? m_searchBox->lineEdit()->text() : QString();
}

void TreeNavigator::find(unsigned clear, unsigned set)
{
    if (!m_dialog || !m_searchBox)
        return;
    m_typed->stop();
    const QString text = searchText();
    remember(m_dialog->isVisible() ? *m_dialog->textBox() : *m_searchBox, text);
    const unsigned options = (m_dialog->options() & ~clear) | set;
    TreeFinder finder(*m_tree, {m_dialog->kind(), text, options}, asItem(m_tree->currentItem()));
    TreeFinder::State state = TreeFinder::State::Searching;
    {
        const GraphReading graph;
        if (graph)
            state = finder.look(std::numeric_limits<int>::max());
    }
    if (state == TreeFinder::State::Searching) { // another thread edits the graph
        callLater(this, GraphReading::kRetryMilliseconds, [this, clear, set] { find(clear, set); });
        return;
    }
    goTo(finder.found());
}

/// Last in what calls it: the panels hear of the new current row, and may end the tool.
void TreeNavigator::goTo(SoTreeViewItem* row)
{
    if (!row)
        return;
    if (row->isFresh()) {
        m_tree->goToItem(row);
        return;
    }
    m_tree->reveal(row);
    m_tree->scrollToItem(row);
    m_tree->setCurrentItem(row);
}

void TreeNavigator::toggleBookmark()
{
    SoTreeViewItem* row = asItem(m_tree->currentItem());
    if (!row)
        return;
    row->setBookmarked(!row->isBookmarked());
    bookmarksChanged();
}

void TreeNavigator::stepBookmark(bool backward)
{
    goTo(m_tree->context().bookmarks.walkOn(*m_tree, asItem(m_tree->currentItem()), backward));
}

void TreeNavigator::clearBookmarks()
{
    m_tree->context().bookmarks.clear();
    bookmarksChanged();
}

void TreeNavigator::bookmarksChanged()
{
    m_tree->viewport()->update();
    m_saveLater.start(0);
    updateActions();
}

void TreeNavigator::saveBookmarks()
{
    m_saveLater.stop();
    if (!readRestoreBookmarks())
        return; // what is stored stays for when it is wanted again
    const GraphReading graph;
    std::vector<BookmarkPath> paths =
        m_tree->context().bookmarks.paths(kMaxStoredBookmarks, bool(graph));
    writeBookmarks(m_scene, paths, m_stored);
    m_stored = std::move(paths);
}

void TreeNavigator::sceneLeaves()
{
    saveBookmarks();
    m_scene.clear();
}

void TreeNavigator::sceneCame()
{
    m_scene = m_sceneNamer && m_tree->getRoot() ? m_sceneNamer() : QString();
    m_stored = readRestoreBookmarks() ? readBookmarks(m_scene) : decltype(m_stored)();
    m_tree->context().bookmarks.addLost(m_stored);
    findLostBookmarks();
    updateActions();
}

void TreeNavigator::findLostBookmarks()
{
    const GraphReading graph;
    if (!graph || m_tree->context().changedElsewhere) {
        m_findLost.start(GraphReading::kRetryMilliseconds);
        return;
    }
    if (m_tree->context().bookmarks.findLost(*m_tree))
        m_tree->viewport()->update();
    updateActions();
}

} // namespace mirabo
