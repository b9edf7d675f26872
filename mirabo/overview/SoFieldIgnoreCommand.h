#pragma once

#include "mirabo/extender/MrbCommand.h"

#include <kalmyr/base/SoRef.h>

class SoField;
class SoFieldContainer;

/// Sets a field's ignored flag; undo puts back what it was.
class SoFieldIgnoreCommand final : public MrbCommand {
public:
    SoFieldIgnoreCommand(SoField* field, bool ignored);

    /// False when the flag was so already.
    bool execute() override;
    void undo() override;
    void redo() override;

private:
    void apply(bool ignored);

    SoRef<SoFieldContainer> m_container; ///< held: the field lives as long as it
    SoField* m_field;                    // Not owned; the container's.
    bool m_ignored;
    bool m_before;
};
