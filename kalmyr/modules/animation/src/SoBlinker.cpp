#include <kalmyr/animation/SoBlinker.h>

#include <algorithm>
#include <cmath>

SO_NODE_SOURCE(SoBlinker)

SoBlinker::SoBlinker()
{
    SO_NODE_CONSTRUCTOR(SoSwitch);
    SO_ADD_FIELD(speed, (1.0f));
    SO_ADD_FIELD(on, (true));
    startClock();
}

SoBlinker::~SoBlinker() = default;

void SoBlinker::initClass()
{
    SO_NODE_INIT_CLASS(SoBlinker, SoSwitch, "Blinker");
}

void SoBlinker::advance(double seconds)
{
    const int numChildren = getNumChildren();
    if (numChildren == 0)
        return;
    m_phase += seconds * static_cast<double>(speed.getValue());
    m_phase -= std::floor(m_phase);
    int shown = static_cast<int>(m_phase * std::max(numChildren, 2));
    if (shown >= numChildren)
        shown = SO_SWITCH_NONE; // a single child's second half
    if (shown != whichChild.getValue())
        whichChild.setValue(shown);
}
