#include "mirabo/preferences/Shortcuts.h"

#include "mirabo/preferences/Settings.h"

#include <QSettings>

namespace mirabo {

namespace {

constexpr char kGroup[] = "/Shortcuts/";
constexpr char kNone[] = "none"; // the user wants no shortcut

} // namespace

QKeySequence readShortcut(const ShortcutEntry& entry)
{
    const QString text = readText(kGroup + entry.key);
    if (text.isEmpty())
        return entry.standard;
    if (text == QLatin1String(kNone))
        return {};
    const QKeySequence shortcut = QKeySequence::fromString(text, QKeySequence::PortableText);
    const bool isKey =
        !shortcut.isEmpty() && !shortcut.toString(QKeySequence::PortableText).isEmpty();
    return isKey ? shortcut : entry.standard;
}

void writeShortcut(const ShortcutEntry& entry, const QKeySequence& shortcut)
{
    const QString key = kGroup + entry.key;
    if (shortcut == entry.standard)
        removeSetting(key);
    else
        writeSetting(key, shortcut.isEmpty() ? QString(kNone)
                                             : shortcut.toString(QKeySequence::PortableText));
}

} // namespace mirabo
