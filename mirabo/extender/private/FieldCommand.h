#pragma once

#include "mirabo/extender/MrbCommand.h"
#include "mirabo/extender/private/FieldStep.h"
#include "mirabo/extender/private/Observed.h"

#include <memory>
#include <vector>

namespace mirabo {

/// Steps of fields as one command. Does nothing for fields that have died.
class FieldCommand final : public MrbCommand {
public:
    struct Entry {
        std::unique_ptr<Observed<SoField>> field;
        std::unique_ptr<FieldStep> step;
    };
    using Entries = std::vector<Entry>;

    FieldCommand(const QString& name, Entries entries);

    bool execute() override;
    void undo() override;
    void redo() override;

    /// Makes further steps, as if they had been made by this command. False, with nothing made,
    /// when the graph cannot be edited.
    bool extend(Entries entries);

private:
    bool absorb(const Entry& later);

    Entries m_entries;
};

} // namespace mirabo
