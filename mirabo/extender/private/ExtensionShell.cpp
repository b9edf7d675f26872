#include "mirabo/extender/private/ExtensionShell.h"

#include "mirabo/extender/MrbExtension.h"
#include "mirabo/extender/private/GuardedEntry.h"
#include "mirabo/extender/private/HostedExtension.h"

#include <QAction>
#include <QDockWidget>
#include <QMenu>
#include <QToolBar>

#include <algorithm>

namespace mirabo {

ExtensionShell::ExtensionShell(HostedExtension& owner) : m_owner(owner), m_guard(owner) {}
ExtensionShell::~ExtensionShell() = default;

template <typename T, void (MrbShell::*operation)(T*)>
void ExtensionShell::takeBack(QObject* object)
{
    (tool()->*operation)(static_cast<T*>(object));
}

bool ExtensionShell::keep(QObject* object, Remover remove)
{
    if (!object || !tool())
        return false;
    const bool known = std::any_of(m_placed.begin(), m_placed.end(), [&](const Placed& placed) {
        return placed.object == object && placed.remove == remove;
    });
    if (!known)
        m_placed.push_back({object, remove});
    m_guard.watch(object);
    return true;
}

void ExtensionShell::removeAll()
{
    if (tool())
        tool()->removeView(m_owner.extension());
    // The youngest first: a menu may be part of a tool bar.
    while (!m_placed.empty()) {
        const Placed placed = m_placed.back();
        m_placed.pop_back();
        if (!placed.object)
            continue;
        if (tool())
            (this->*placed.remove)(placed.object);
        delete placed.object;
    }
    m_entries.clear();
}

void ExtensionShell::addDockWidget(QDockWidget* dock, Qt::DockWidgetArea area)
{
    if (keep(dock, &ExtensionShell::takeBack<QDockWidget, &MrbShell::removeDockWidget>))
        tool()->addDockWidget(dock, area);
}

void ExtensionShell::removeDockWidget(QDockWidget* dock)
{
    if (tool())
        tool()->removeDockWidget(dock);
}

MrbContextMenus ExtensionShell::getContextMenus(int typeIndex) const
{
    return tool() ? tool()->getContextMenus(typeIndex) : MrbContextMenus();
}

void ExtensionShell::addContextMenu(int typeIndex, bool derivedToo, QMenu* menu)
{
    if (keep(menu, &ExtensionShell::takeBack<QMenu, &MrbShell::removeContextMenu>))
        tool()->addContextMenu(typeIndex, derivedToo, menu);
}

void ExtensionShell::addMenu(QMenu* menu)
{
    if (keep(menu, &ExtensionShell::takeBack<QMenu, &MrbShell::removeMenu>))
        tool()->addMenu(menu);
}

QDockWidget* ExtensionShell::addView(MrbExtension* extension, Qt::DockWidgetArea area)
{
    // Others' views would not go with this extension.
    if (extension != m_owner.extension() || !tool())
        return nullptr;
    QDockWidget* view = tool()->addView(extension, area);
    if (view)
        m_guard.watch(view);
    return view;
}

void ExtensionShell::removeContextMenu(QMenu* menu)
{
    if (tool())
        tool()->removeContextMenu(menu);
}

void ExtensionShell::removeMenu(QMenu* menu)
{
    if (tool())
        tool()->removeMenu(menu);
}

void ExtensionShell::removeView(MrbExtension* extension)
{
    if (extension == m_owner.extension() && tool())
        tool()->removeView(extension);
}

bool ExtensionShell::addEntry(QAction* entry, const QString& place, double position)
{
    if (!entry || !tool())
        return false;
    QPointer<GuardedEntry>& shown = m_entries[entry];
    if (!shown || shown->original() != entry)
        shown = new GuardedEntry(m_owner, entry);
    if (!tool()->addEntry(shown, place, position)) {
        delete shown;
        m_entries.erase(entry);
        return false;
    }
    keep(shown, &ExtensionShell::takeBack<QAction, &MrbShell::removeEntry>);
    if (entry->menu())
        m_guard.watch(entry->menu());
    return true;
}

void ExtensionShell::removeEntry(QAction* entry)
{
    const auto at = m_entries.find(entry);
    if (at == m_entries.end())
        return;
    if (at->second && tool())
        tool()->removeEntry(at->second);
    delete at->second;
    m_entries.erase(at);
}

void ExtensionShell::clearStatusMessage()
{
    if (tool())
        tool()->clearStatusMessage();
}

void ExtensionShell::addStatusWidget(QWidget* widget, int permanent, int stretch)
{
    if (keep(widget, &ExtensionShell::takeBack<QWidget, &MrbShell::removeStatusWidget>))
        tool()->addStatusWidget(widget, permanent, stretch);
}

void ExtensionShell::showStatusMessage(const SbString& text, int timeout)
{
    if (tool())
        tool()->showStatusMessage(text, timeout);
}

void ExtensionShell::removeStatusWidget(QWidget* widget)
{
    if (tool())
        tool()->removeStatusWidget(widget);
}

void ExtensionShell::addToolBar(QToolBar* toolBar, Qt::ToolBarArea area)
{
    if (keep(toolBar, &ExtensionShell::takeBack<QToolBar, &MrbShell::removeToolBar>))
        tool()->addToolBar(toolBar, area);
}

void ExtensionShell::removeToolBar(QToolBar* toolBar)
{
    if (tool())
        tool()->removeToolBar(toolBar);
}

} // namespace mirabo
