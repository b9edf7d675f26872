#include "mirabo/tree/TypedSearch.h"

#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeRows.h"

#include <QLineEdit>

#include <utility>

namespace mirabo {

namespace {

/// Rows between two looks at what the user does: some milliseconds.
constexpr int kSlice = 20000;

} // namespace

TypedSearch::TypedSearch(SoMiraboTreeView* tree, QLineEdit* edit,
                         std::function<std::optional<TreeFinder::Query>(const QString&)> query)
    : QObject(tree), m_tree(tree), m_query(std::move(query))
{
    m_timer.setParent(this);
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &TypedSearch::look);
    connect(edit, &QLineEdit::textEdited, this, &TypedSearch::typed);
    connect(edit, &QLineEdit::editingFinished, this, &TypedSearch::stop);
}

TypedSearch::~TypedSearch() = default;

void TypedSearch::stop()
{
    m_timer.stop();
    m_finder.reset();
    m_start.reset();
}

void TypedSearch::typed(const QString& text)
{
    m_timer.stop();
    m_finder.reset();
    const std::optional<TreeFinder::Query> query = m_query(text);
    if (!query) {
        m_start.reset();
        return;
    }
    if (!m_start) {
        RowWalker walker(m_tree->invisibleRootItem());
        if (SoTreeViewItem* current = asItem(m_tree->currentItem()))
            walker.toRow(current);
        else
            walker.toFirst();
        m_start = walker.place();
    }
    m_finder.emplace(*m_tree, *query, *m_start);
    m_timer.start(0);
}

void TypedSearch::look()
{
    {
        const GraphReading graph;
        const bool goesOn = !graph || m_finder->look(kSlice) == TreeFinder::State::Searching;
        if (goesOn) {
            m_timer.start(graph ? 0 : GraphReading::kRetryMilliseconds);
            return;
        }
    }
    SoTreeViewItem* row = m_finder->found();
    m_finder.reset();
    if (row)
        Q_EMIT found(row);
}

} // namespace mirabo
