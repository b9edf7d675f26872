#pragma once

#include <kalmyr/core/SoDeathObserver.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

class SoNode;

namespace mirabo {

/// Receives what the toolkit tells of nodes apart from notifications: deaths, names, and changes
/// below nodes whose notification is off. Passed on at once in the thread of the user interface;
/// what happens in other threads is kept until that thread asks. About all nodes of the process:
/// the receiver looks up whether it knows them.
class NodeNews final : private SoDeathObserver {
public:
    class Receiver {
    public:
        /// The pointer is only good for comparing.
        virtual void nodeDied(const SoNode* node) = 0;
        virtual void nodeRenamed(const SoNode* node) = 0;
        /// `since` is the stamp of the first such change.
        virtual void nodeChangedUnheard(const SoNode* node, std::uint64_t since) = 0;
        /// Called in any thread: something waits to be delivered.
        virtual void newsWaiting() = 0;

    protected:
        ~Receiver() = default;
    };

    /// Belongs to the thread that makes it.
    NodeNews() = default;
    /// Null before the receiver goes.
    void setReceiver(Receiver* receiver);

    /// Passes on what came from other threads.
    void deliver();
    /// For any thread.
    bool isWaiting() const { return m_isWaiting; }

    /// While the lock is held, no node that the receiver has not been told of is destroyed. For a
    /// single look at a node: whoever destroys one in another thread waits.
    [[nodiscard]] std::unique_lock<std::mutex> keepAlive();

private:
    enum class Kind : std::uint8_t { Death, Name, Unheard };
    struct Item {
        Kind kind;
        const SoNode* node;
        std::uint64_t since;
    };

    void objectDies(const SoBase* object) override;
    void nameChanged(const SoBase* object) override;
    void changedUnheard(const SoFieldContainer* container) override;
    void tell(const Item& item);
    void pass(const Item& item);

    const std::thread::id m_thread = std::this_thread::get_id();
    Receiver* m_receiver = nullptr; // Not owned.
    std::mutex m_mutex;
    std::vector<Item> m_waiting;
    std::atomic<bool> m_isWaiting{false};
};

} // namespace mirabo
