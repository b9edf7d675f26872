#pragma once

#include "mirabo/extender/MrbCommand.h"
#include "mirabo/extender/private/Observed.h"

#include <kalmyr/core/SoField.h>

/// Sets a field's ignored flag; undo puts back what it was. Nothing once the field has died.
class SoFieldIgnoreCommand final : public MrbCommand {
public:
    SoFieldIgnoreCommand(SoField* field, bool ignored);

    /// False when the flag was so already.
    bool execute() override;
    void undo() override;
    void redo() override;

private:
    bool apply(bool ignored);

    mirabo::Observed<SoField> m_field;
    bool m_ignored;
    bool m_before;
};
