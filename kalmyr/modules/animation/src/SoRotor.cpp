#include <kalmyr/animation/SoRotor.h>

#include <cmath>
#include <numbers>

SO_NODE_SOURCE(SoRotor)

SoRotor::SoRotor()
{
    SO_NODE_CONSTRUCTOR(SoRotation);
    SO_ADD_FIELD(speed, (1.0f));
    SO_ADD_FIELD(on, (true));
    startClock();
}

SoRotor::~SoRotor() = default;

void SoRotor::initClass()
{
    SO_NODE_INIT_CLASS(SoRotor, SoRotation, "Rotor");
}

void SoRotor::advance(double seconds)
{
    constexpr double kTurn = 2 * std::numbers::pi;
    SbVec3f axis;
    float angle = 0;
    rotation.getValue().getValue(axis, angle);
    if (angle > 0)
        m_axis = axis;
    const double next = std::fmod(static_cast<double>(angle)
                                      + kTurn * seconds * static_cast<double>(speed.getValue()),
                                  kTurn);
    rotation.setValue(SbRotation(m_axis, static_cast<float>(next)));
}
