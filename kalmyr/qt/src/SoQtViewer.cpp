#include <kalmyr/qt/SoQtViewer.h>

#include "SoQtRenderAreaImpl.h"
#include "ViewerDecoration.h"

#include <kalmyr/gui/SoGuiViewer.h>

#include <QMenu>
#include <QMouseEvent>

SoQtViewer::SoQtViewer(SoGuiViewer* viewer, QWidget* parent, const char* name, bool embed,
                       BuildFlag flag, Type)
    : SoQtRenderArea(viewer, parent, name, embed), m_decoration(std::make_unique<Decoration>(this))
{
    if (flag & BUILD_DECORATION)
        m_decoration->buildColumn();
    if (flag & BUILD_POPUP) {
        m_decoration->buildMenu();
        impl().bridge->onMenuButton = [this](const QMouseEvent& event) {
            if (!isViewing())
                return false; // the scene's own use of the button
            m_decoration->menu()->popup(event.globalPos());
            return true;
        };
    }
    impl().onNewSurface = [this] { m_decoration->refresh(); };
    viewer->setStateCallback(
        [](void* data, SoGuiViewer*) { static_cast<SoQtViewer*>(data)->m_decoration->refresh(); },
        this);
}

SoQtViewer::~SoQtViewer()
{
    getGuiViewer()->setStateCallback(nullptr, nullptr);
    impl().onNewSurface = nullptr;
    if (impl().bridge)
        impl().bridge->onMenuButton = nullptr;
    // Its actions go with the widget, and nothing may run them on the way.
    if (QWidget* whole = getWidget())
        for (QObject* action : whole->findChildren<QAction*>(QString(), Qt::FindDirectChildrenOnly))
            action->disconnect();
}

SoGuiViewer* SoQtViewer::getGuiViewer() const
{
    return static_cast<SoGuiViewer*>(getGuiRenderArea());
}

SoCamera* SoQtViewer::getCamera() const
{
    return getGuiViewer()->getCamera();
}

void SoQtViewer::setViewing(bool on)
{
    getGuiViewer()->setViewing(on);
}

bool SoQtViewer::isViewing() const
{
    return getGuiViewer()->isViewing();
}

void SoQtViewer::viewAll()
{
    impl().layOut();
    getGuiViewer()->viewAll();
}

void SoQtViewer::saveHomePosition()
{
    getGuiViewer()->saveHomePosition();
}

void SoQtViewer::resetToHomePosition()
{
    getGuiViewer()->resetToHomePosition();
}

void SoQtViewer::setHeadlight(bool on)
{
    getGuiViewer()->setHeadlight(on);
}

bool SoQtViewer::isHeadlight() const
{
    return getGuiViewer()->isHeadlight();
}

void SoQtViewer::setDecoration(bool on)
{
    if (QWidget* column = m_decoration->column())
        column->setVisible(on);
}

bool SoQtViewer::isDecoration() const
{
    return m_decoration->column() && !m_decoration->column()->isHidden();
}
