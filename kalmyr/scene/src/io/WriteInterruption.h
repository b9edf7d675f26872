#pragma once

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/base/SoRefCounter.h>

#include <functional>
#include <utility>
#include <vector>

namespace kalmyr::detail {

/// Asks a caller, while a graph is written, whether to go on. The graph may have been edited
/// afterwards, as long as the nodes on the way to the present one live.
class WriteInterruption {
public:
    explicit WriteInterruption(SoAction& action) : m_action(action) {}

    void set(std::function<bool()> goOn) { m_goOn = std::move(goOn); }
    bool isPossible() const { return m_goOn != nullptr; }
    /// Whether the caller said no: the traversals have been ended.
    bool isInterrupted() const { return m_interrupted; }

    void ask()
    {
        if (!m_goOn || m_interrupted || (m_valueDepth > 0 && !m_inCopy) || m_goOn())
            return;
        m_interrupted = true;
        m_action.setTerminated(true);
    }

    /// Keeps what is needed again later.
    void hold(SoRefCounter* object)
    {
        if (m_goOn && object && object->getRefCount() > 0)
            m_held.emplace_back(object);
    }

    /// While it lives, a value of the graph is written, which must not change: nobody is asked.
    class Value {
    public:
        explicit Value(WriteInterruption& of) : m_of(of) { ++m_of.m_valueDepth; }
        ~Value() { --m_of.m_valueDepth; }
        Value(const Value&) = delete;
        Value& operator=(const Value&) = delete;

    private:
        WriteInterruption& m_of;
    };

    /// The same for a value that is a copy, which does not change: the caller is asked in between.
    class Copy {
    public:
        explicit Copy(WriteInterruption& of) : m_of(of) { m_of.m_inCopy = true; }
        ~Copy() { m_of.m_inCopy = false; }
        Copy(const Copy&) = delete;
        Copy& operator=(const Copy&) = delete;

    private:
        WriteInterruption& m_of;
    };
    bool isInCopy() const { return m_inCopy; }

private:
    SoAction& m_action;
    std::function<bool()> m_goOn;
    std::vector<SoRef<SoRefCounter>> m_held;
    int m_valueDepth = 0;
    bool m_inCopy = false;
    bool m_interrupted = false;
};

} // namespace kalmyr::detail
