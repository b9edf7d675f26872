#pragma once

#include <QString>

class SoMiraboState;

/// The named states of the process, and the one that is in force.
class SoMiraboStateManager {
public:
    SoMiraboStateManager() = delete;

    /// Keeps a state under a name; it is not owned. Another one of that name is replaced.
    static void registerState(const QString& name, SoMiraboState* state);
    /// Leaves the current state and enters that of the name; nothing when it is current already. An
    /// unknown name, or one whose state has died or is null, is told on the error output and ends
    /// the switch there.
    static void setCurrentState(const QString& name);
    /// Empty when no state is in force.
    static QString getCurrentState();
    /// Takes a state out without leaving it: it is dying.
    static void forget(const SoMiraboState* state);
};
