#include "mirabo/extender/private/GuardedEntry.h"

#include "mirabo/extender/private/HostedExtension.h"

#include <QSignalBlocker>

namespace mirabo {

GuardedEntry::GuardedEntry(HostedExtension& owner, QAction* original)
    : m_owner(owner), m_original(original)
{
    copyLook();
    connect(original, &QAction::changed, this, &GuardedEntry::copyLook);
    connect(original, &QAction::toggled, this, &GuardedEntry::copyLook);
    connect(original, &QObject::destroyed, this, [this] {
        setVisible(false);
        setEnabled(false);
    });
    connect(this, &QAction::triggered, this, &GuardedEntry::pass);
}

void GuardedEntry::copyLook()
{
    if (!m_original || m_passing)
        return;
    setText(m_original->text());
    setIcon(m_original->icon());
    setToolTip(m_original->toolTip());
    setStatusTip(m_original->statusTip());
    setWhatsThis(m_original->whatsThis());
    setShortcuts(m_original->shortcuts());
    setObjectName(m_original->objectName());
    setMenu(m_original->menu());
    setSeparator(m_original->isSeparator());
    setCheckable(m_original->isCheckable());
    {
        const QSignalBlocker quiet(this);
        setChecked(m_original->isChecked());
    }
    setEnabled(m_original->isEnabled());
    setVisible(m_original->isVisible());
}

void GuardedEntry::pass(bool)
{
    if (!m_original || m_owner.isFailed())
        return;
    m_passing = true;
    m_owner.run("a slot of an entry", [this] { m_original->trigger(); });
    m_passing = false;
    copyLook(); // exclusive groups and slots may have changed it
}

} // namespace mirabo
