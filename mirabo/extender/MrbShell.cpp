#include "mirabo/extender/MrbShell.h"

#include "mirabo/extender/private/HostedExtension.h"

#include <kalmyr/core/SoType.h>

namespace {

MrbShell* s_instance = nullptr;

} // namespace

MrbShell* MrbShell::getInstance()
{
    const auto* caller = mirabo::HostedExtension::current();
    return caller ? caller->shell() : s_instance;
}

MrbShell* MrbShell::getToolInstance()
{
    return s_instance;
}

void MrbShell::setInstance(MrbShell* shell)
{
    s_instance = shell;
}

MrbShell::~MrbShell()
{
    if (s_instance == this)
        s_instance = nullptr;
}

void MrbShell::addContextMenu(SoType type, bool derivedToo, QMenu* menu)
{
    addContextMenu(type.getIndex(), derivedToo, menu);
}

QList<QMenu*> MrbShell::contextMenusFor(SoType type) const
{
    QList<QMenu*> menus = getContextMenus(type.getIndex()).exact;
    for (; !type.isBad(); type = type.getParent())
        for (QMenu* menu : getContextMenus(type.getIndex()).inherited)
            if (!menus.contains(menu))
                menus << menu;
    return menus;
}
