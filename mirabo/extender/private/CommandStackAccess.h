#pragma once

#include "mirabo/extender/MrbExport.h"

#include <functional>

class MrbCommand;

namespace mirabo {

/// Interface of services with an undo stack, beyond that for extensions.
class MRBEXT_API CommandStackAccess {
public:
    using Test = std::function<bool(const MrbCommand*)>;

    virtual ~CommandStackAccess();

    /// A command is being executed, undone or redone.
    virtual bool isRunningCommand() const = 0;
    /// Not while a command runs. Removes and deletes the commands that the test names, and those of
    /// others that cannot be undone or redone without them.
    virtual void removeCommands(const Test& test) = 0;
};

} // namespace mirabo
