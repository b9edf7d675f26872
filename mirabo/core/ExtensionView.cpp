#include "mirabo/core/ExtensionView.h"

#include <QAction>

namespace mirabo {

ExtensionView::ExtensionView(const QString& title, QWidget* parent) : QDockWidget(title, parent) {}

QAction* ExtensionView::createToggleAction(const QString& text)
{
    auto* action = new QAction(text, this);
    action->setCheckable(true);
    action->setChecked(toggleViewAction()->isChecked());
    // Qt's own action knows when a dock is closed, as opposed to being behind another.
    connect(toggleViewAction(), &QAction::toggled, action, &QAction::setChecked);
    connect(action, &QAction::toggled, this, &ExtensionView::s_viewChanged);
    return action;
}

void ExtensionView::s_viewChanged(bool shown)
{
    if (toggleViewAction()->isChecked() == shown)
        return;
    setVisible(shown);
    if (shown)
        raise();
}

} // namespace mirabo
