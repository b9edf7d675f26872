#include <kalmyr/io/SoSlicedWrite.h>

#include "core/StackSwitch.h"

#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoWriteAction.h>

#include <utility>
#include <vector>

namespace {

/// The clock is looked at once in so many questions, a microsecond's work each at most.
constexpr int kQuestionsPerLook = 64;

} // namespace

class SoSlicedWrite::Impl {
public:
    Impl(SoNode* root, SoOutput* out)
        : m_root(root), m_out(out), m_action(out), m_call([this] { m_action.apply(m_root.get()); })
    {
        m_action.m_goOn = [this] { return goOn(); };
    }

    SoWriteAction& action() { return m_action; }
    SoOutput& output() { return *m_out; }
    State getState() const { return m_state; }
    bool hasBegun() const { return m_call.hasBegun(); }

    State run(const SbTime& duration)
    {
        if (m_state != RUNNING)
            return m_state;
        m_end = SbTime::monotonic() + duration;
        m_asked = 0;
        resume();
        return m_state;
    }
    void cancel()
    {
        if (m_state != RUNNING)
            return;
        m_cancelled = true;
        m_out->discard();
        if (m_call.hasBegun())
            resume();
        m_state = FAILED;
    }

private:
    bool goOn()
    {
        if (m_cancelled)
            return false;
        if (++m_asked % kQuestionsPerLook == 0 && SbTime::monotonic() >= m_end)
            m_call.pause();
        return !m_cancelled;
    }
    void resume()
    {
        // The call goes on with these nodes: they are released after it has paused again.
        const std::vector<SoRef<SoNode>> before = std::exchange(m_held, {});
        if (m_call.resume()) {
            m_state = m_out->hasFailed() ? FAILED : DONE;
            return;
        }
        for (int up = 0; SoNode* node = m_action.getCurNode(up); ++up)
            m_held.emplace_back(node);
    }

    SoRef<SoNode> m_root;
    SoOutput* m_out; // Not owned.
    SoWriteAction m_action;
    kalmyr::detail::PausableCall m_call;
    std::vector<SoRef<SoNode>> m_held; ///< the way to the present node, while paused
    SbTime m_end;
    State m_state = RUNNING;
    int m_asked = 0;
    bool m_cancelled = false;
};

SoSlicedWrite::SoSlicedWrite(SoNode* root, SoOutput* out)
    : m_impl(std::make_unique<Impl>(root, out))
{
}

SoSlicedWrite::~SoSlicedWrite()
{
    cancel();
}

void SoSlicedWrite::setRootWritten(bool on)
{
    if (kalmyr::holds(!m_impl->hasBegun(), "nothing is written yet"))
        m_impl->action().setRootWritten(on);
}

SoSlicedWrite::State SoSlicedWrite::run(const SbTime& duration)
{
    if (!kalmyr::holds(!m_impl->output().isBinary(), "an output in text form"))
        m_impl->cancel();
    return m_impl->run(duration);
}

SoSlicedWrite::State SoSlicedWrite::getState() const
{
    return m_impl->getState();
}

void SoSlicedWrite::cancel()
{
    m_impl->cancel();
}
