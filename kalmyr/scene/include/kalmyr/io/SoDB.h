#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbName.h>
#include <kalmyr/base/SbString.h>
#include <kalmyr/base/SbTime.h>
#include <kalmyr/core/SoType.h>

class SoField;
class SoInput;
class SoNode;
class SoPath;
class SoSeparator;
class SoVRMLGroup;

namespace kalmyr::detail {
class SceneReader;
}

/// The toolkit as a whole: starting it, reading scenes, keeping threads apart.
class KALMYR_API SoDB {
public:
    SoDB() = delete;

    /// Registers all classes of the toolkit, lower areas first. Repeatable. What draws is started
    /// by its own users, so that a program without graphics does not need it.
    static void init();
    /// Undoes one init(); with the last one optional modules are finished in reverse order.
    static void finish();
    static bool isInitialized();

    /// Registers an area that stands above this one; called by init(), at once when that is past.
    static void addInit(void (*init)());

    /// "Kalmyr 0.1.0".
    static SbString getVersion();

    /// Reads everything in a scene file of any known format: the file's one separator, or a new
    /// separator around all of it. Reference count 0. Null after the first fatal error, which is
    /// posted as a read error with its place; nothing that was read remains then. A null input is a
    /// broken contract, here and below: null or false, an error is posted.
    static SoSeparator* readAll(SoInput* in);
    /// The same for VRML97 files only: a group around everything in the file.
    static SoVRMLGroup* readAllVRML(SoInput* in);

    /// Reads the next node; null with `true` at the end of the file. Header as in readAll(); text
    /// in memory may lack one, it is then Kalmyr text.
    static bool read(SoInput* in, SoNode*& node);
    /// For those who read node by node, after the last one: lets `root` carry the prototypes that
    /// nothing in the file is an instance of, so that writing it writes them. readAll() does.
    static void keepUnusedPrototypes(SoInput* in, SoNode* root);
    /// Reads a path as written by a write action; a new path, reference count 0.
    static bool read(SoInput* in, SoPath*& path);

    /// Something to be done with every node of exactly that type right after it was read, while its
    /// file is open; one function a type.
    using ReadHook = void (*)(SoInput* in, SoNode* node);
    static void setReadHook(SoType type, ReadHook hook);
    static ReadHook getReadHook(SoType type);

    /// Fields found by name in the whole process; see SoGlobalField. `realTime` (SFTime) is there
    /// from the start.
    static SoField* getGlobalField(const SbName& name);
    static SoField* createGlobalField(const SbName& name, SoType type);
    /// Time between ticks of `realTime`; zero stops it.
    static void setRealTimeInterval(const SbTime& interval);
    static SbTime getRealTimeInterval();

    /// Held by threads that read a graph while others may edit it, and by whoever edits it.
    /// Recursive. A thread that holds the read lock may take the write lock when no other thread
    /// wants the same at that time; see SoRecursiveRWLock.
    ///
    /// Under the read lock any number of threads may read fields, follow children and apply actions
    /// to the same graph at the same time; what has to be computed for that, and caches, are
    /// guarded inside. Paths and other results that lead into the graph go before the lock is given
    /// up. Everything that changes a shared graph needs the write lock: fields, children,
    /// connections, sensors that are attached or detached. A graph that only one thread knows needs
    /// no lock, whatever it is made of; it is handed over under the write lock: what the thread
    /// keeps beside its graphs passes to the application when it gives the lock up.
    ///
    /// Sensors of priority 0 run in the thread that edits; where the others run, SoSensorManager
    /// tells. Whoever processes their queues holds the read lock meanwhile, if graphs are edited in
    /// other threads, as the Qt binding does. Actions that draw stay in one thread.
    static void readlock();
    /// False when the lock cannot be had within that time; zero: without waiting.
    [[nodiscard]] static bool tryReadlock(const SbTime& patience = SbTime::zero());
    static void readunlock();
    /// False, with an error posted, when two readers would wait for each other; see above. Nothing
    /// may be edited then, and writeunlock() must not follow. SoWriteLock takes care of both.
    [[nodiscard]] static bool writelock();
    static void writeunlock();
    /// Whether the calling thread holds the write lock.
    static bool isWritelocked();

private:
    static kalmyr::detail::SceneReader* readerOf(SoInput* in, bool headerNeeded);
};
