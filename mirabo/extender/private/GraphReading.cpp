#include "mirabo/extender/private/GraphReading.h"

#include "mirabo/extender/private/Later.h"

#include <utility>

namespace mirabo {

namespace {

// Of the thread of the user interface.
int s_held = 0;
bool s_isPatient = true;

} // namespace

GraphReading::GraphReading()
{
    if (s_held == 0) {
        m_lock.emplace(s_isPatient ? SbTime(kPatience) : SbTime::zero());
        s_isPatient = static_cast<bool>(*m_lock);
    }
    m_isHeld = s_held > 0 || *m_lock;
    if (m_isHeld)
        ++s_held;
}

GraphReading::~GraphReading()
{
    if (m_isHeld)
        --s_held;
}

void whenReadable(QObject* context, std::function<void()> work)
{
    {
        const GraphReading graph;
        if (graph) {
            work();
            return;
        }
    }
    callLater(context, GraphReading::kRetryMilliseconds,
              [context, work = std::move(work)] { whenReadable(context, work); });
}

} // namespace mirabo
