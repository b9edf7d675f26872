#pragma once

#include <QList>
#include <QMenu>
#include <QPointer>

#include <functional>
#include <utility>
#include <vector>

class SoMiraboTreeView;
class SoType;

namespace mirabo {
enum class MoveStep;
}

/// The context menu of the scene tree: fixed entries, then what extensions offer for the type of
/// the node that was clicked. Its entries do nothing once the row is gone that it was opened for.
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
    QAction* add(const char* text, const char* icon, std::function<void()> function);
    void addFixedEntries();
    void addMoveEntries();
    void prepareMoveEntries();
    void removeExtensionEntries();

    SoMiraboTreeView* m_view; // Not owned; owns us.
    std::function<QList<QMenu*>(SoType)> m_extension;
    QAction* m_addNode = nullptr;
    QAction* m_save = nullptr;
    QAction* m_delete = nullptr;
    std::vector<std::pair<QAction*, mirabo::MoveStep>> m_moves;
    QAction* m_ignore = nullptr;
    QAction* m_showReferences = nullptr;
    QAction* m_hideReferences = nullptr;
    QList<QAction*> m_steps; ///< from reference to reference
    QAction* m_firstSeparator = nullptr;
    QAction* m_secondSeparator = nullptr;
    QList<QPointer<QAction>> m_extensionEntries; ///< of the last request
};
