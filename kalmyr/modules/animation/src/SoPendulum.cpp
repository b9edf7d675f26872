#include <kalmyr/animation/SoPendulum.h>

SO_NODE_SOURCE(SoPendulum)

SoPendulum::SoPendulum() : m_clockwork(on, [this](double seconds) { advance(seconds); })
{
    SO_NODE_CONSTRUCTOR(SoRotation);
    SO_ADD_FIELD(rotation0, (SbRotation()));
    SO_ADD_FIELD(rotation1, (SbRotation()));
    SO_ADD_FIELD(speed, (1.0f));
    SO_ADD_FIELD(on, (true));
    m_clockwork.start();
}

SoPendulum::~SoPendulum() = default;

void SoPendulum::initClass()
{
    SO_NODE_INIT_CLASS(SoPendulum, SoRotation, "Pendulum");
}

SoFieldContainer* SoPendulum::createTwin() const
{
    SoFieldContainer* twin = SoRotation::createTwin();
    if (twin)
        static_cast<SoPendulum*>(twin)->m_clockwork.stop();
    return twin;
}

void SoPendulum::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    SoRotation::copyContents(from, copier);
    m_clockwork.start();
}

void SoPendulum::advance(double seconds)
{
    m_phase += seconds * static_cast<double>(speed.getValue());
    rotation.setValue(SbRotation::slerp(rotation0.getValue(), rotation1.getValue(),
                                        kalmyr::detail::toAndFro(m_phase)));
}
