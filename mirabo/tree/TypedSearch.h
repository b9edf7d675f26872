#pragma once

#include "mirabo/tree/TreeFinder.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <optional>

class QLineEdit;
class SoMiraboTreeView;

namespace mirabo {

/// Finds rows while the user types: each key stops the search for the text before it and begins
/// anew at the row that was current when the typing began.
class TypedSearch final : public QObject {
    Q_OBJECT

public:
    /// `query` makes the query for a text, or none while such searches are off. The tree owns the
    /// search; the line edit must live as long.
    TypedSearch(SoMiraboTreeView* tree, QLineEdit* edit,
                std::function<std::optional<TreeFinder::Query>(const QString&)> query);
    ~TypedSearch() override;

    bool isRunning() const { return m_finder.has_value(); }
    /// Ends the search under way, and the typing: the next key begins at the row then current.
    void stop();

Q_SIGNALS:
    void found(SoTreeViewItem* row);

private:
    void typed(const QString& text);
    void look();

    SoMiraboTreeView* m_tree; // Not owned; owns us.
    std::function<std::optional<TreeFinder::Query>(const QString&)> m_query;
    std::optional<RowPlace> m_start; ///< while the user types
    std::optional<TreeFinder> m_finder;
    QTimer m_timer;
};

} // namespace mirabo
