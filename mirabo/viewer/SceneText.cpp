#include "mirabo/viewer/SceneText.h"

#include "mirabo/core/ErrorScope.h"

#include <kalmyr/base/SoReadError.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <QByteArray>

namespace mirabo {

namespace {

/// The only child, which needs no group around it.
SoRef<SoNode> onlyChildOf(const SoRef<SoGroup>& group)
{
    if (group->getNumChildren() == 1)
        return SoRef<SoNode>(group->getChild(0));
    return SoRef<SoNode>(group->getNumChildren() > 0 ? group.get() : nullptr);
}

SoRef<SoNode> readNodes(SoInput& in)
{
    const SoRef<SoGroup> group(new SoSeparator);
    SoNode* node = nullptr;
    while (SoDB::read(&in, node)) {
        if (!node)
            return onlyChildOf(group);
        group->addChild(node);
    }
    return {};
}

SoRef<SoNode> readWorld(SoInput& in)
{
    const SoRef<SoVRMLGroup> world(SoDB::readAllVRML(&in));
    if (!world || world->getNumChildren() == 0)
        return {};
    return SoRef<SoNode>(world->getNumChildren() == 1 ? world->getChild(0) : world.get());
}

} // namespace

SoRef<SoNode> readSceneText(const QString& text, QString& problem)
{
    const FirstError<SoReadError> error;
    const QByteArray bytes = text.toUtf8();
    SoInput in;
    SoRef<SoNode> node;
    if (in.setBuffer(bytes.constData(), static_cast<std::size_t>(bytes.size())))
        node = in.isFileVRML2() ? readWorld(in) : readNodes(in);
    problem = node || !error.text().isEmpty() ? error.text() : "It holds no node.";
    return node;
}

} // namespace mirabo
