#include "mirabo/launch/IgnoreSwitch.h"

#include "mirabo/core/SoCommandManager.h"
#include "mirabo/extender/MrbCommand.h"
#include "mirabo/overview/SoMiraboEdition.h"
#include "mirabo/tree/SoMiraboTreeView.h"

#include <kalmyr/core/SoField.h>

#include <QAction>
#include <QFocusEvent>

namespace mirabo {

IgnoreSwitch::IgnoreSwitch(QAction* action, SoMiraboTreeView* tree, SoMiraboEdition* edition,
                           SoCommandManager* hub)
    : m_action(action), m_tree(tree), m_edition(edition), m_hub(hub)
{
    connect(tree, &SoMiraboTreeView::ignoreEnableChanged, this, &IgnoreSwitch::useTree);
    connect(edition, &SoMiraboEdition::fieldPicked, this, &IgnoreSwitch::fieldPicked);
    connect(edition, &SoMiraboEdition::fieldSelected, this, [this](SoField* field) {
        if (m_onField)
            m_action->setEnabled(field);
    });
    connect(edition, &SoMiraboEdition::ignoreRequested, this, &IgnoreSwitch::switchField);
    tree->installEventFilter(this);
    useTree();
}

IgnoreSwitch::~IgnoreSwitch() = default;

void IgnoreSwitch::useTree()
{
    m_onField = false;
    m_action->setEnabled(m_tree->canIgnoreOrEnable());
}

void IgnoreSwitch::fieldPicked(SoField* field)
{
    m_onField = field;
    if (field)
        m_action->setEnabled(true);
    else
        useTree();
}

bool IgnoreSwitch::eventFilter(QObject*, QEvent* event)
{
    // A menu that closes, or a window that comes up again, gives the focus back: nobody selects.
    if (event->type() == QEvent::FocusIn) {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason == Qt::MouseFocusReason || reason == Qt::TabFocusReason
            || reason == Qt::BacktabFocusReason || reason == Qt::ShortcutFocusReason)
            useTree();
    }
    return false;
}

void IgnoreSwitch::switchField()
{
    if (MrbCommand* command = m_edition->makeIgnoreCommand())
        m_hub->addCommand(command);
}

void IgnoreSwitch::run()
{
    if (m_onField)
        switchField();
    else
        m_tree->ignoreEnable();
}

} // namespace mirabo
