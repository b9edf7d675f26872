#pragma once

#include "mirabo/extender/MrbPluginsManager.h"
#include "mirabo/preferences/Shortcuts.h"

#include <QWidget>

class QKeySequenceEdit;
class QLabel;
class QPushButton;
class QTreeWidget;

namespace mirabo {

/// A page of the preferences: the shortcuts of all actions, to be changed and put back.
class ShortcutsPage final : public QWidget {
    Q_OBJECT

public:
    /// `saved` puts what was stored in force.
    ShortcutsPage(ShortcutEntries entries, std::function<void()> saved, QWidget* parent);

    void load();
    void save();
    /// The page as the dialog takes it.
    MrbPluginsManager::PreferencePage asPage();

private:
    void build();
    void fill();
    void showRow(int row);
    void showCurrent();
    void change(const QKeySequence& shortcut);
    void resetAll();
    /// The other actions that have the shortcut, where the user has chosen one of the two.
    QString conflictsOf(int row) const;
    int currentRow() const;

    const ShortcutEntries m_entries;
    std::vector<QKeySequence> m_shown;  ///< one an entry
    std::vector<QKeySequence> m_loaded; ///< or saved last
    const std::function<void()> m_saved;
    QTreeWidget* m_rows;
    QKeySequenceEdit* m_edit;
    QPushButton* m_clear;
    QPushButton* m_reset;
    QLabel* m_conflict;
};

} // namespace mirabo
