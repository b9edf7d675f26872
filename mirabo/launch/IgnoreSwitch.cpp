#include "mirabo/launch/IgnoreSwitch.h"

#include "mirabo/core/CommandOwner.h"
#include "mirabo/core/SoCommandManager.h"
#include "mirabo/extender/MrbCommand.h"
#include "mirabo/overview/SoMiraboEdition.h"
#include "mirabo/tree/SoMiraboTreeView.h"

#include <kalmyr/core/SoField.h>

#include <QFocusEvent>

namespace mirabo {

IgnoreSwitch::IgnoreSwitch(SoMiraboTreeView* tree, SoMiraboEdition* edition, SoCommandManager* hub,
                           CommandOwner& owner)
    : m_tree(tree), m_edition(edition), m_hub(hub), m_owner(owner)
{
    hub->actions().add(ActionId::IgnoreEnable, this,
                       {[this] { run(); }, [this] { return isPossible(); }});
    connect(tree, &SoMiraboTreeView::ignoreEnableChanged, this, &IgnoreSwitch::useTree);
    connect(edition, &SoMiraboEdition::fieldPicked, this, &IgnoreSwitch::fieldPicked);
    connect(edition, &SoMiraboEdition::fieldSelected, this, [this](SoField* field) {
        m_hasField = field;
        m_hub->actions().update(ActionId::IgnoreEnable);
    });
    connect(edition, &SoMiraboEdition::ignoreRequested, this, &IgnoreSwitch::switchField);
    tree->installEventFilter(this);
    useTree();
}

IgnoreSwitch::~IgnoreSwitch() = default;

void IgnoreSwitch::useTree()
{
    m_onField = false;
    m_hub->actions().update(ActionId::IgnoreEnable);
}

void IgnoreSwitch::fieldPicked(SoField* field)
{
    m_onField = field;
    m_hasField = field;
    m_hub->actions().update(ActionId::IgnoreEnable);
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
    m_owner.push(std::unique_ptr<MrbCommand>(m_edition->makeIgnoreCommand()));
}

bool IgnoreSwitch::isPossible() const
{
    return m_onField ? m_hasField : m_tree->canIgnoreOrEnable();
}

void IgnoreSwitch::run()
{
    if (m_onField)
        switchField();
    else
        m_tree->ignoreEnable();
}

} // namespace mirabo
