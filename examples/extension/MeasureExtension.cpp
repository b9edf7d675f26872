#include "MeasureExtension.h"

#include "MeasurePage.h"
#include "MeasureView.h"
#include "TintCommand.h"

#include <kalmyr/base/SbString.h>
#include <kalmyr/nodes/SoGroup.h>
#include <mirabo/extender/MrbServices.h>
#include <mirabo/extender/MrbShell.h>

#include <QAction>
#include <QMenu>

namespace {

constexpr int kMessageMs = 4000;

} // namespace

MrbExtensionInfo MeasureExtension::getInfo() const
{
    return {"Measure", "Measurements", "The Mirabo examples", "1.0"};
}

bool MeasureExtension::activate()
{
    shell()->addView(this, Qt::RightDockWidgetArea);
    offerTint();
    connect(services(), &MrbServices::selectedNodeChanged, this, &MeasureExtension::show);
    connect(services(), &MrbServices::sceneGraphChanged, this, [this] { show(nullptr); });
    show(services()->getSelectedNode());
    return true;
}

// The view, the menu and the commands are taken away by the tool; the scene is let go of here.
void MeasureExtension::deactivate()
{
    show(nullptr);
}

QWidget* MeasureExtension::createView(QWidget* parent)
{
    m_view = new MeasureView(this, parent);
    return m_view;
}

MrbPreferencePage* MeasureExtension::createPreferencePage(QWidget* parent)
{
    auto* page = new MeasurePage(parent);
    connect(page, &MeasurePage::saved, this, [this] { show(services()->getSelectedNode()); });
    return page;
}

void MeasureExtension::show(SoFieldContainer* container)
{
    if (!m_view)
        return;
    const bool isNode = container && container->isOfType(SoNode::getClassTypeId());
    m_view->setNode(isNode ? static_cast<SoNode*>(container) : nullptr);
}

void MeasureExtension::offerTint()
{
    auto* menu = new QMenu("Measure");
    QAction* action = menu->addAction("Tint Children");
    action->setToolTip("Puts a material of the preferred color before the children");
    menu->setToolTipsVisible(true);
    connect(action, &QAction::triggered, this, &MeasureExtension::tint);
    shell()->addContextMenu(SoGroup::getClassTypeId(), true, menu);
}

void MeasureExtension::tint()
{
    SoFieldContainer* selected = services()->getSelectedNode();
    if (!selected || !selected->isOfType(SoGroup::getClassTypeId()))
        return;
    services()->pushCommand(
        new TintCommand(static_cast<SoGroup*>(selected), MeasurePage::preferredColor()));
    shell()->showStatusMessage("Tinted; Undo takes the color away", kMessageMs);
}
