#pragma once

#include "mirabo/extender/MrbExport.h"

#include <QString>

/// An undoable edit. Pushed through MrbServices, which executes it and owns it from then on.
///
/// The order of the virtual operations and the size of the class are part of the binary interface.
class MRBEXT_API MrbCommand {
public:
    /// Makes the edit for the first time; the result is handed back to whoever pushed the command.
    /// A command that returns false has changed nothing.
    virtual bool execute() = 0;
    virtual void undo() = 0;
    virtual void redo() = 0;
    virtual ~MrbCommand();

    /// Its name for the user, such as "Delete Cube" in "Undo Delete Cube"; empty when it has no
    /// name. To be set before it is pushed.
    const QString& getName() const;
    void setName(const QString& name);

    MrbCommand(const MrbCommand&) = delete;
    MrbCommand& operator=(const MrbCommand&) = delete;

protected:
    MrbCommand();

private:
    QString m_name;
};
