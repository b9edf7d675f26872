#include "mirabo/core/CommandName.h"

#include <kalmyr/core/SoNode.h>

namespace mirabo {

QString nodeText(const SoNode& node)
{
    const SbName name = node.getName();
    return QString::fromUtf8((name.isEmpty() ? node.getTypeId().getName() : name).getString());
}

QString commandName(const QString& verb, const SoNode& node)
{
    return verb + ' ' + nodeText(node);
}

} // namespace mirabo
