#pragma once

#include <kalmyr/base/Export.h>

class SoBase;
class SoFieldContainer;

/// Hears what no notification reports: the death of every object that was marked by
/// SoBase::tellOfDeath(), also of those whose notification is switched off, new names of such
/// objects, and that a container whose notification is off keeps changes to itself.
///
/// All calls come in the thread that makes the change, one at a time in the process. They must not
/// edit a graph, release references, or wait for a lock of the scene database.
///
/// For mirrors of large graphs: marking costs no memory, where an auditor for each object would. An
/// observer does not know who marked an object, so it looks each one up in a table of its own.
class KALMYR_API SoDeathObserver {
public:
    SoDeathObserver(const SoDeathObserver&) = delete;
    SoDeathObserver& operator=(const SoDeathObserver&) = delete;

    /// The object is about to be destroyed: it is still whole, its reference count is 0.
    /// Not pure: it may be called while a derived object is being destroyed.
    virtual void objectDies(const SoBase*) {}
    /// The marked object has got another name, or none.
    virtual void nameChanged(const SoBase*) {}
    /// The first change at or below a container, marked or not, since its notification was switched
    /// off; the change's stamp is the container's change id.
    virtual void changedUnheard(const SoFieldContainer*) {}

protected:
    SoDeathObserver();
    /// Waits for a call under way in another thread.
    ~SoDeathObserver();
};
