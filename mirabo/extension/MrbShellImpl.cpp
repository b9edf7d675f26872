#include "mirabo/extension/MrbShellImpl.h"

#include "mirabo/core/ExtensionView.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/extender/MrbExtension.h"

#include <kalmyr/base/SbString.h>
#include <kalmyr/base/SoError.h>

#include <QAction>
#include <QMenu>
#include <QStatusBar>
#include <QToolBar>

namespace {

MrbShellImpl* s_instance = nullptr;

std::uint64_t keyOf(const QAction* entry)
{
    return reinterpret_cast<std::uintptr_t>(entry);
}

/// The window stores its layout by name.
void nameForLayout(QWidget* widget)
{
    if (widget->objectName().isEmpty())
        widget->setObjectName("extension:" + widget->windowTitle());
}

} // namespace

MrbShellImpl* MrbShellImpl::getInstance(QWidget* parent)
{
    if (!s_instance)
        createInstance(parent);
    return s_instance;
}

void MrbShellImpl::createInstance(QWidget* parent)
{
    if (s_instance) {
        SoError::post("MrbShellImpl::createInstance, instance already exists.");
        return;
    }
    s_instance = new MrbShellImpl(parent);
    setInstance(s_instance);
}

bool MrbShellImpl::exists()
{
    return s_instance != nullptr;
}

void MrbShellImpl::destroyInstance()
{
    delete s_instance;
    s_instance = nullptr;
}

MrbShellImpl::MrbShellImpl(QWidget* parent)
    : m_frame(new SoMiraboMainFrame(parent)), m_places(m_frame.data())
{
}

MrbShellImpl::~MrbShellImpl()
{
    delete m_frame.data();
}

void MrbShellImpl::placeDock(SoMiraboMainFrame& frame, QDockWidget* dock, Qt::DockWidgetArea area)
{
    dock->setParent(&frame);
    nameForLayout(dock);
    // The layout was restored before extensions came.
    if (!frame.restoreDockWidget(dock)) {
        frame.addDockWidget(area, dock);
        dock->show();
    }
}

void MrbShellImpl::addDockWidget(QDockWidget* dock, Qt::DockWidgetArea area)
{
    if (!m_frame)
        return;
    placeDock(*m_frame, dock, area);
    if (m_frame) // whoever was shown may have deleted it
        m_places.listDock(dock->toggleViewAction());
}

void MrbShellImpl::removeDockWidget(QDockWidget* dock)
{
    if (!m_frame)
        return;
    m_places.unlist(dock->toggleViewAction());
    m_frame->removeDockWidget(dock);
}

QList<QMenu*> MrbShellImpl::registered(const Menus& menus, int typeIndex)
{
    QList<QMenu*> found;
    const auto [begin, end] = menus.equal_range(typeIndex);
    for (auto at = begin; at != end; ++at)
        if (at->second)
            found << at->second;
    return found;
}

MrbContextMenus MrbShellImpl::getContextMenus(int typeIndex) const
{
    return {registered(m_exactMenus, typeIndex), registered(m_inheritedMenus, typeIndex)};
}

void MrbShellImpl::addContextMenu(int typeIndex, bool derivedToo, QMenu* menu)
{
    (derivedToo ? m_inheritedMenus : m_exactMenus).emplace(typeIndex, menu);
    if (m_frame)
        menu->setParent(m_frame, menu->windowFlags());
}

void MrbShellImpl::removeContextMenu(QMenu* menu)
{
    const auto gone = [menu](const auto& entry) { return !entry.second || entry.second == menu; };
    std::erase_if(m_exactMenus, gone);
    std::erase_if(m_inheritedMenus, gone);
}

void MrbShellImpl::addMenu(QMenu* menu)
{
    if (m_frame)
        m_places.addMenu(menu);
}

void MrbShellImpl::removeMenu(QMenu* menu)
{
    if (m_frame)
        m_places.removeMenu(menu);
}

QDockWidget* MrbShellImpl::addView(MrbExtension* extension, Qt::DockWidgetArea area)
{
    if (!m_frame)
        return nullptr;
    if (const auto known = m_views.find(extension); known != m_views.end() && known->second.dock)
        return known->second.dock;
    const MrbExtensionInfo info = extension->getInfo();
    if (!m_frame)
        return nullptr; // here and below: the host may delete the window in any call of its code
    const QPointer<mirabo::ExtensionView> dock =
        new mirabo::ExtensionView(info.description, m_frame.data());
    dock->setObjectName("view:" + info.name); // its place is stored under this
    m_views[extension].dock = dock; // goes with the extension, also when that throws
    QWidget* content = extension->createView(dock);
    if (!content || !m_frame) {
        removeView(extension);
        return nullptr;
    }
    dock->setWidget(content);
    placeDock(*m_frame, dock, area);
    if (!m_frame || !dock)
        return nullptr;
    QAction* toggle = dock->createToggleAction(info.description);
    m_views[extension].toggle = toggle;
    m_places.listDock(toggle);
    return dock;
}

void MrbShellImpl::removeView(MrbExtension* extension)
{
    const auto at = m_views.find(extension);
    if (at == m_views.end())
        return;
    const View view = at->second;
    m_views.erase(at);
    if (!view.dock)
        return;
    if (view.toggle)
        view.toggle->disconnect(view.dock);
    if (m_frame)
        m_frame->removeDockWidget(view.dock);
    delete view.dock;
}

bool MrbShellImpl::addEntry(QAction* entry, const QString& place, double position)
{
    if (!m_frame || !m_places.addEntry(entry, place, position))
        return false;
    m_entries[keyOf(entry)] = position;
    return true;
}

void MrbShellImpl::removeEntry(QAction* entry)
{
    m_entries.erase(keyOf(entry));
    if (m_frame)
        m_places.removeEntry(entry);
}

void MrbShellImpl::clearStatusMessage()
{
    if (m_frame)
        m_frame->statusBar()->clearMessage();
}

void MrbShellImpl::addStatusWidget(QWidget* widget, int permanent, int stretch)
{
    if (!m_frame)
        return;
    QStatusBar* bar = m_frame->statusBar();
    widget->setParent(bar);
    if (permanent != 0)
        bar->addPermanentWidget(widget, stretch);
    else
        bar->addWidget(widget, stretch);
    widget->show();
}

void MrbShellImpl::showStatusMessage(const SbString& text, int timeout)
{
    if (m_frame)
        m_frame->statusBar()->showMessage(QString::fromLatin1(text.getString()), timeout);
}

void MrbShellImpl::removeStatusWidget(QWidget* widget)
{
    if (m_frame)
        m_frame->statusBar()->removeWidget(widget);
}

void MrbShellImpl::addToolBar(QToolBar* toolBar, Qt::ToolBarArea area)
{
    if (!m_frame)
        return;
    toolBar->setParent(m_frame);
    nameForLayout(toolBar);
    m_frame->addToolBar(area, toolBar);
    toolBar->show();
    if (m_frame)
        m_places.listToolBar(toolBar->toggleViewAction());
}

void MrbShellImpl::removeToolBar(QToolBar* toolBar)
{
    if (!m_frame)
        return;
    m_places.unlist(toolBar->toggleViewAction());
    m_frame->removeToolBar(toolBar);
}
