#pragma once

#include <QKeySequence>
#include <QString>

#include <vector>

/// The user's own keyboard shortcuts. Only those that differ from the tool's are kept.
namespace mirabo {

/// An action that can have a shortcut.
struct ShortcutEntry {
    QString key;           ///< names it in the store
    QString text;          ///< for the user, such as "Find Next"
    QKeySequence standard; ///< the tool's own; empty: none
};
using ShortcutEntries = std::vector<ShortcutEntry>;

/// The shortcut in force: the user's, or the tool's own. A text in the store that is no key
/// sequence counts as the tool's own.
QKeySequence readShortcut(const ShortcutEntry& entry);
void writeShortcut(const ShortcutEntry& entry, const QKeySequence& shortcut);

} // namespace mirabo
