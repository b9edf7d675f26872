#pragma once

#include "mirabo/extender/MrbExport.h"

/// An undoable edit. Pushed through MrbServices, which executes it and owns it from then on.
///
/// The order of the virtual operations is part of the binary interface.
class MRBEXT_API MrbCommand {
public:
    /// Makes the edit for the first time; the result is handed back to whoever pushed the command.
    /// A command that returns false has changed nothing.
    virtual bool execute() = 0;
    virtual void undo() = 0;
    virtual void redo() = 0;
    virtual ~MrbCommand();

    MrbCommand(const MrbCommand&) = delete;
    MrbCommand& operator=(const MrbCommand&) = delete;

protected:
    MrbCommand() = default;
};
