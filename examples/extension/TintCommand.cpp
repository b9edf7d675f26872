#include "TintCommand.h"

#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoMaterial.h>

namespace {

/// Keeps the host's other threads out while the graph is edited.
class WriteScope {
public:
    WriteScope() { SoDB::writelock(); }
    ~WriteScope() { SoDB::writeunlock(); }
    WriteScope(const WriteScope&) = delete;
    WriteScope& operator=(const WriteScope&) = delete;
};

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
}

bool TintCommand::execute()
{
    const WriteScope scope;
    return m_group->insertChild(m_material.get(), 0);
}

void TintCommand::undo()
{
    const WriteScope scope;
    if (m_group->findChild(m_material.get()) >= 0) // the host may have taken it away
        m_group->removeChild(m_material.get());
}

void TintCommand::redo()
{
    execute();
}
