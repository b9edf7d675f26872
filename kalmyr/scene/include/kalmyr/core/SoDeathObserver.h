#pragma once

#include <kalmyr/base/Export.h>

class SoBase;

/// Hears of the death of every object that was marked by SoBase::tellOfDeath(), also of those whose
/// notification is switched off.
///
/// For mirrors of large graphs: marking costs no memory, where an auditor for each object would. An
/// observer does not know who marked an object, so it looks each one up in a table of its own.
class KALMYR_API SoDeathObserver {
public:
    SoDeathObserver(const SoDeathObserver&) = delete;
    SoDeathObserver& operator=(const SoDeathObserver&) = delete;

    /// The object is about to be destroyed: it is still whole, its reference count is 0. Called in
    /// the thread that destroys it, one call at a time in the process. Must not edit a graph,
    /// release references, or wait for a lock of the scene database.
    virtual void objectDies(const SoBase* object) = 0;

protected:
    SoDeathObserver();
    /// Waits for a call under way in another thread.
    ~SoDeathObserver();
};
