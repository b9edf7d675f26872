#include "mirabo/tree/FilterActions.h"

#include "mirabo/core/SoCommandManager.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/tree/MrbFilterDialog.h"
#include "mirabo/tree/SoMiraboTreeView.h"

#include <QAction>

namespace mirabo {

FilterActions::FilterActions(SoMiraboTreeView* tree, SoMiraboMainFrame* frame,
                             SoCommandManager* hub)
    : QObject(tree), m_tree(tree), m_frame(frame), m_hub(hub)
{
    connect(hub, &SoCommandManager::filterRequested, tree, &SoMiraboTreeView::setFilter);
    connect(tree, &SoMiraboTreeView::rootChanged, &hub->actions(), &ActionRegistry::updateLater);
    connect(frame, &SoMiraboMainFrame::filterChanged, this, &FilterActions::fillDialog);
    connect(frame, &SoMiraboMainFrame::customFilterToggled, this, &FilterActions::setOpen);
    tree->setFilter(frame->getFilterMask());
    registerActions();
}

FilterActions::~FilterActions()
{
    delete m_dialog;
}

MrbFilterDialog* FilterActions::dialog() const
{
    return m_dialog;
}

void FilterActions::registerActions()
{
    const auto hasRows = [this] { return m_tree->rootItem() != nullptr; };
    for (int id = static_cast<int>(ActionId::ToggleFilters);
         id <= static_cast<int>(ActionId::CustomFilter); ++id) {
        const QPointer<QAction> action = m_frame->action(static_cast<ActionId>(id));
        const auto toggle = [action] {
            if (action)
                action->toggle();
        };
        m_hub->actions().add(static_cast<ActionId>(id), this, {toggle, hasRows});
    }
    m_hub->actions().add(ActionId::Filter, this, {[this] { open(); }, hasRows});
}

void FilterActions::open()
{
    if (!m_frame)
        return;
    if (!m_dialog) {
        m_dialog = new MrbFilterDialog(m_frame);
        connect(m_dialog, &MrbFilterDialog::maskChanged, m_frame,
                &SoMiraboMainFrame::checkCategories);
        connect(m_dialog, &MrbFilterDialog::switched, m_frame->action(ActionId::ToggleFilters),
                &QAction::setChecked);
        connect(m_dialog, &QDialog::finished, this, [this] {
            if (m_frame)
                m_frame->action(ActionId::CustomFilter)->setChecked(false);
            m_tree->setFocus();
        });
    }
    fillDialog();
    m_frame->action(ActionId::CustomFilter)->setChecked(true);
    m_dialog->show();
    m_dialog->raise();
    m_dialog->activateWindow();
}

void FilterActions::setOpen(bool on)
{
    if (on)
        open();
    else if (m_dialog)
        m_dialog->close();
}

void FilterActions::fillDialog()
{
    if (!m_dialog || !m_frame)
        return;
    m_dialog->setMask(m_frame->getCheckedCategories());
    m_dialog->setOn(m_frame->action(ActionId::ToggleFilters)->isChecked());
}

} // namespace mirabo
