#include "mirabo/core/ExtensionPlaces.h"

#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

#include <algorithm>

namespace mirabo {

namespace {

constexpr char kSeparatorName[] = "extensionSeparator";

QString plain(QString title)
{
    return title.remove('&');
}

QMenu* menuOf(const QWidget* holder, const QString& title)
{
    for (const QAction* action : holder->actions())
        if (action->menu() && plain(action->menu()->title()) == title)
            return action->menu();
    return nullptr;
}

} // namespace

ExtensionPlaces::ExtensionPlaces(QMainWindow* window) : m_window(window) {}

void ExtensionPlaces::addMenu(QMenu* menu)
{
    QMenuBar* bar = m_window->menuBar();
    const QList<QAction*> menus = bar->actions();
    // The bar shows it; the window owns it, as it does the tool's own.
    menu->setParent(m_window, menu->windowFlags());
    bar->insertMenu(menus.isEmpty() ? nullptr : menus.last(), menu);
}

void ExtensionPlaces::removeMenu(QMenu* menu)
{
    m_window->menuBar()->removeAction(menu->menuAction());
}

QWidget* ExtensionPlaces::findPlace(const QString& path) const
{
    for (QToolBar* bar : m_window->findChildren<QToolBar*>(QString(), Qt::FindDirectChildrenOnly))
        if (bar->windowTitle() == path)
            return bar;
    QWidget* place = m_window->menuBar();
    for (const QString& title : path.split('/'))
        if (place)
            place = menuOf(place, title);
    return place;
}

bool ExtensionPlaces::addEntry(QAction* entry, const QString& path, double position)
{
    QWidget* place = findPlace(path);
    if (!place)
        return false;
    removeEntry(entry);
    separate(place);
    const auto behind =
        std::upper_bound(m_entries.begin(), m_entries.end(), position,
                         [](double wanted, const Entry& other) { return wanted < other.position; });
    const auto next = std::find_if(behind, m_entries.end(), [place](const Entry& other) {
        return other.place == place && other.action;
    });
    place->insertAction(next == m_entries.end() ? nullptr : next->action.data(), entry);
    m_entries.insert(behind, {entry, place, position});
    return true;
}

void ExtensionPlaces::removeEntry(QAction* entry)
{
    const auto at = std::find_if(m_entries.begin(), m_entries.end(),
                                 [entry](const Entry& other) { return other.action == entry; });
    if (at == m_entries.end())
        return;
    const QPointer<QWidget> place = at->place;
    m_entries.erase(at);
    if (!place)
        return;
    place->removeAction(entry);
    if (!holdsEntries(place))
        dropSeparator(place);
}

bool ExtensionPlaces::holdsEntries(const QWidget* place) const
{
    return std::any_of(m_entries.begin(), m_entries.end(), [place](const Entry& entry) {
        return entry.place == place && entry.action;
    });
}

void ExtensionPlaces::separate(QWidget* place) const
{
    if (holdsEntries(place) || place->actions().isEmpty())
        return;
    dropSeparator(place); // of entries that died
    auto* line = new QAction(place);
    line->setSeparator(true);
    line->setObjectName(kSeparatorName);
    place->addAction(line);
}

void ExtensionPlaces::dropSeparator(QWidget* place) const
{
    delete place->findChild<QAction*>(kSeparatorName, Qt::FindDirectChildrenOnly);
}

QMenu* ExtensionPlaces::viewMenu() const
{
    return menuOf(m_window->menuBar(), "View");
}

// Docks stand above the first separator, tool bars below it.
void ExtensionPlaces::listDock(QAction* toggle)
{
    QMenu* menu = viewMenu();
    if (!menu)
        return;
    const QList<QAction*> listed = menu->actions();
    const auto line = std::find_if(listed.begin(), listed.end(),
                                   [](const QAction* action) { return action->isSeparator(); });
    menu->insertAction(line == listed.end() ? nullptr : *line, toggle);
}

void ExtensionPlaces::listToolBar(QAction* toggle)
{
    QMenu* menu = viewMenu();
    if (!menu)
        return;
    QAction* line = menu->findChild<QAction*>(kSeparatorName, Qt::FindDirectChildrenOnly);
    menu->insertAction(line, toggle);
}

void ExtensionPlaces::unlist(QAction* toggle)
{
    if (QMenu* menu = viewMenu())
        menu->removeAction(toggle);
}

} // namespace mirabo
