#pragma once

#include "mirabo/core/GraphReading.h"

#include <kalmyr/core/SoAuditor.h>

#include <functional>
#include <memory>

class QObject;

namespace mirabo {

/// Follows one object of the host's graph (a node, a field, a container) for a panel: hears of its
/// changes and of its death, with its notification switched off as well, in whatever thread they
/// come. Holds no reference.
///
/// Belongs to the thread of the user interface. It may be destroyed at any time, while another
/// thread edits as well: nothing is called from then on.
class GraphFollower {
public:
    struct Calls {
        /// Inside the change, in the thread that edits: may only note. Null: nobody notes.
        std::function<void()> touched = {};
        /// In the thread of the user interface with its next pass, once however many changes came.
        std::function<void()> changed = {};
        /// Inside the death, in the thread that destroys, which must hold the write lock unless it
        /// is that of the user interface: forgets the object. A node and its fields are whole
        /// still; of a field the value is gone.
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
        start(std::move(calls), [object](SoAuditor* ear) { object->removeAuditor(ear); });
        object->addAuditor(ear(), SoAuditor::SENSOR);
        return true;
    }
    /// Follows nothing any more.
    void release();
    /// False once the object began to die.
    bool isFollowing() const;

private:
    class Ear;
    void start(Calls calls, std::function<void(SoAuditor*)> remove);
    SoAuditor* ear() const;

    QObject* m_context; // Not owned.
    std::shared_ptr<Ear> m_ear;
};

} // namespace mirabo
