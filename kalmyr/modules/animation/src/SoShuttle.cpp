#include <kalmyr/animation/SoShuttle.h>

SO_NODE_SOURCE(SoShuttle)

SoShuttle::SoShuttle()
{
    SO_NODE_CONSTRUCTOR(SoTranslation);
    SO_ADD_FIELD(translation0, (0.0f, 0.0f, 0.0f));
    SO_ADD_FIELD(translation1, (0.0f, 0.0f, 0.0f));
    SO_ADD_FIELD(speed, (1.0f));
    SO_ADD_FIELD(on, (true));
    startClock();
}

SoShuttle::~SoShuttle() = default;

void SoShuttle::initClass()
{
    SO_NODE_INIT_CLASS(SoShuttle, SoTranslation, "Shuttle");
}

void SoShuttle::advance(double seconds)
{
    m_phase += seconds * static_cast<double>(speed.getValue());
    const SbVec3f& from = translation0.getValue();
    translation.setValue(from
                         + (translation1.getValue() - from) * kalmyr::detail::toAndFro(m_phase));
}
