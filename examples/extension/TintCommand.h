#pragma once

#include <kalmyr/base/SoRef.h>
#include <kalmyr/nodes/SoGroup.h>
#include <mirabo/extender/MrbCommand.h>

#include <QColor>

/// Puts a material of one color before the children of a group, and takes it away again.
class TintCommand final : public MrbCommand {
public:
    TintCommand(SoGroup* group, const QColor& color);

    bool execute() override;
    void undo() override;
    void redo() override;

private:
    // Both are kept: the command may be redone long after the host has dropped them.
    SoRef<SoGroup> m_group;
    SoRef<SoNode> m_material;
};
