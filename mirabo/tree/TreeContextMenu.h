#pragma once

#include <QList>
#include <QMenu>

#include <functional>

class SoMiraboTreeView;
class SoType;

/// The context menu of the scene tree: fixed entries, then what extensions offer for the type of
/// the node that was clicked.
class TreeContextMenu final : public QMenu {
    Q_OBJECT

public:
    explicit TreeContextMenu(SoMiraboTreeView* view);

    void setExtension(std::function<QList<QMenu*>(SoType)> extension)
    {
        m_extension = std::move(extension);
    }
    /// Brings the entries in line with the current row; `type` is that of the clicked node.
    void prepare(SoType type);
    /// The entry of that text, or null.
    QAction* entry(const QString& text) const;

private:
    void addFixedEntries();

    SoMiraboTreeView* m_view; // Not owned; owns us.
    std::function<QList<QMenu*>(SoType)> m_extension;
    QList<QAction*> m_referenceEntries; ///< with their separator
    QList<QAction*> m_extensionEntries; ///< of the last request
};
