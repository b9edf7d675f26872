#include "mirabo/extension/MrbShellImpl.h"

#include "mirabo/core/SoMiraboMainFrame.h"

#include <kalmyr/base/SbString.h>
#include <kalmyr/base/SoError.h>

#include <QDockWidget>
#include <QStatusBar>
#include <QToolBar>

namespace {

MrbShellImpl* s_instance = nullptr;

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

MrbShellImpl::MrbShellImpl(QWidget* parent) : m_frame(new SoMiraboMainFrame(parent)) {}

MrbShellImpl::~MrbShellImpl()
{
    delete m_frame.data();
}

void MrbShellImpl::addDockWidget(QDockWidget* dock, Qt::DockWidgetArea area)
{
    dock->setParent(m_frame);
    m_frame->addDockWidget(area, dock);
}

void MrbShellImpl::removeDockWidget(QDockWidget* dock)
{
    m_frame->removeDockWidget(dock);
}

void MrbShellImpl::clearStatusMessage()
{
    m_frame->statusBar()->clearMessage();
}

void MrbShellImpl::addStatusWidget(QWidget* widget, int permanent, int stretch)
{
    QStatusBar* bar = m_frame->statusBar();
    widget->setParent(bar);
    if (permanent != 0)
        bar->addPermanentWidget(widget, stretch);
    else
        bar->addWidget(widget, stretch);
}

void MrbShellImpl::showStatusMessage(const SbString& text, int timeout)
{
    m_frame->statusBar()->showMessage(QString::fromLatin1(text.getString()), timeout);
}

void MrbShellImpl::removeStatusWidget(QWidget* widget)
{
    m_frame->statusBar()->removeWidget(widget);
}

void MrbShellImpl::addToolBar(QToolBar* toolBar, Qt::ToolBarArea area)
{
    toolBar->setParent(m_frame);
    m_frame->addToolBar(area, toolBar);
}

void MrbShellImpl::removeToolBar(QToolBar* toolBar)
{
    m_frame->removeToolBar(toolBar);
}
