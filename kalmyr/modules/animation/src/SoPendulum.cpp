#include <kalmyr/animation/SoPendulum.h>

SO_NODE_SOURCE(SoPendulum)

SoPendulum::SoPendulum()
{
    SO_NODE_CONSTRUCTOR(SoRotation);
    SO_ADD_FIELD(rotation0, (SbRotation()));
    SO_ADD_FIELD(rotation1, (SbRotation()));
    SO_ADD_FIELD(speed, (1.0f));
    SO_ADD_FIELD(on, (true));
    startClock();
}

SoPendulum::~SoPendulum() = default;

void SoPendulum::initClass()
{
    SO_NODE_INIT_CLASS(SoPendulum, SoRotation, "Pendulum");
}

void SoPendulum::advance(double seconds)
{
    m_phase += seconds * static_cast<double>(speed.getValue());
    rotation.setValue(SbRotation::slerp(rotation0.getValue(), rotation1.getValue(),
                                        kalmyr::detail::toAndFro(m_phase)));
}
