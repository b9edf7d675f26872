#include "TintCommand.h"

#include <kalmyr/io/SoWriteLock.h>
#include <kalmyr/nodes/SoMaterial.h>

namespace {

SoMaterial* makeMaterial(const QColor& color)
{
    auto* material = new SoMaterial;
    material->diffuseColor.setValue(SbColor(static_cast<float>(color.redF()),
                                            static_cast<float>(color.greenF()),
                                            static_cast<float>(color.blueF())));
    return material;
}

} // namespace

TintCommand::TintCommand(SoGroup* group, const QColor& color)
    : m_group(group), m_material(makeMaterial(color))
{
    setName("Tint " + color.name()); // shown as "Undo Tint #ff0000"
}

bool TintCommand::execute()
{
    const SoWriteLock lock; // keeps the host's other threads out
    return lock && m_group->insertChild(m_material.get(), 0);
}

void TintCommand::undo()
{
    const SoWriteLock lock;
    if (lock && m_group->findChild(m_material.get()) >= 0) // the host may have taken it away
        m_group->removeChild(m_material.get());
}

void TintCommand::redo()
{
    execute();
}
