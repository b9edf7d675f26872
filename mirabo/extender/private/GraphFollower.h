#pragma once

#include "mirabo/extender/MrbExport.h"
#include "mirabo/extender/private/GraphReading.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/base/SoRefCounter.h>
#include <kalmyr/core/SoAuditor.h>

#include <functional>
#include <memory>

class QObject;
class SoField;

namespace mirabo {

/// Follows one object of the host's graph (a node, a field, a container) for a panel: hears of its
/// changes and of its death, with its notification switched off as well, in whatever thread they
/// come. Holds no reference, but can take one while it looks at the object, as long as that lives.
///
/// Belongs to the thread of the user interface. It may be destroyed at any time, while another
/// thread edits as well: nothing is called from then on.
class MRBEXT_API GraphFollower {
public:
    struct Calls {
        /// Inside the change, in the thread that edits: may only note. Null: nobody notes.
        std::function<void()> touched = {};
        /// Inside the death, in the thread that destroys: forgets the object. A node and its fields
        /// are whole still; of a field the value is gone.
        std::function<void()> dying = {};
        /// In the thread of the user interface: before the death goes on if it happens there, else
        /// with the next pass. May destroy the follower.
        std::function<void()> died = {};
    };

    /// `context` lives in the thread of the user interface and longer than this; null when nothing
    /// is to be called there.
    explicit GraphFollower(QObject* context = nullptr) : m_context(context) {}
    ~GraphFollower() { release(); }
    GraphFollower(const GraphFollower&) = delete;
    GraphFollower& operator=(const GraphFollower&) = delete;

    /// False, with nothing followed, while another thread edits; see GraphReading.
    template <class T>
    bool follow(T* object, Calls calls)
    {
        release();
        const GraphReading graph;
        if (!graph)
            return false;
        start(std::move(calls), ownerOf(object),
              [object](SoAuditor* ear) { object->removeAuditor(ear); });
        object->addAuditor(ear(), SoAuditor::SENSOR);
        return true;
    }
    /// Follows nothing any more.
    void release();
    /// False once the object began to die.
    bool isFollowing() const;
    /// Keeps the object, or the container of a followed field, alive for a look at it under a
    /// GraphReading; null when it is dead or dying. Another thread may let go of a node without the
    /// lock, when the graph does not hold it any more.
    SoRef<const SoRefCounter> hold() const;

private:
    class Ear;
    static const SoRefCounter* ownerOf(const SoRefCounter* object) { return object; }
    static const SoRefCounter* ownerOf(const SoField* field);
    void start(Calls calls, const SoRefCounter* owner, std::function<void(SoAuditor*)> remove);
    SoAuditor* ear() const;

    QObject* m_context; // Not owned.
    std::shared_ptr<Ear> m_ear;
};

} // namespace mirabo
