#pragma once

#include <QByteArray>
#include <QJsonArray>

#include <vector>

class QTreeWidgetItem;
class SoMiraboTreeView;
class SoTreeViewItem;

namespace mirabo {

/// Where a row stands, told so that it is found again in another run: the numbers, types and names
/// of the rows from the root down.
struct BookmarkPath {
    struct Step {
        int row = 0;
        QByteArray type; ///< as UTF-8, like the name
        QByteArray name; ///< of the node; empty: none
    };
    /// Rows that are deeper have no path.
    static constexpr int kMaxDepth = 400;

    std::vector<Step> steps;

    /// Without names while another thread edits the graph.
    static BookmarkPath of(const SoTreeViewItem* row);
    static Step stepTo(const SoTreeViewItem* row);
    /// Number of the row below `parent` (the invisible root for the top level) that is closest to
    /// the step's and has its type and name; -1 when there is none. The caller holds a
    /// GraphReading.
    static int findBelow(const SoMiraboTreeView& tree, QTreeWidgetItem* parent, const Step& step);
    bool isEmpty() const { return steps.empty(); }
    /// Whether the row has the last step's type and name; true for an empty path.
    bool endsAt(const SoTreeViewItem* row) const;

    /// The row there: step by step the closest sibling of that type and name. When the way is lost,
    /// the first row of a node with the last step's name and type, if that has a name. Else null.
    SoTreeViewItem* find(const SoMiraboTreeView& tree) const;

    QJsonArray toJson() const;
    /// Empty when the text is no path.
    static BookmarkPath fromJson(const QJsonArray& json);
};

} // namespace mirabo
