#pragma once

#include "mirabo/extender/MrbExport.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/base/SoRefCounter.h>

#include <functional>
#include <memory>

class MrbCommand;
class SoField;

namespace mirabo {

/// Interface of services with an undo stack, beyond that for extensions.
class MRBEXT_API CommandStackAccess {
public:
    using Test = std::function<bool(const MrbCommand*)>;

    virtual ~CommandStackAccess();

    /// Executes a command and puts it on the undo stack. Unlike those pushed through MrbServices it
    /// is deleted when the stack forgets it, and stays when the extension goes that had it made.
    virtual bool pushOwnCommand(std::unique_ptr<MrbCommand> command) = 0;
    /// Nothing has been done or undone since this command was executed. The pointer is compared
    /// only.
    virtual bool isLastCommand(const MrbCommand* command) const = 0;
    /// Makes a further edit, which that command takes for its own. Nothing, and false, when it is
    /// not the last one; else what the edit returned.
    virtual bool extendCommand(const MrbCommand* command, const std::function<bool()>& edit) = 0;
    /// The selected field, and what keeps it alive for a look under a GraphReading: another thread
    /// may destroy it at any time. Null, with nothing kept, for none.
    virtual SoRef<const SoRefCounter> holdSelectedField(SoField*& field) const = 0;
    /// A command is being executed, undone or redone.
    virtual bool isRunningCommand() const = 0;
    /// Not while a command runs. Removes and deletes the commands that the test names, and those of
    /// others that cannot be undone or redone without them.
    virtual void removeCommands(const Test& test) = 0;
};

} // namespace mirabo
