#pragma once

#include <kalmyr/animation/SoClockwork.h>
#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/fields/SoValueFields.h>

class SoNode;
class SoNodeCopier;

namespace kalmyr::detail {

/// A node of type `Base` that moves in real time. Its class adds the fields `speed` and `on`, and
/// starts the clock last in its constructor.
template <class Base>
class KALMYR_VISIBLE Animated : public Base {
public:
    SoSFFloat speed; ///< 1; rounds a second, of the kind that the class tells
    SoSFBool on;     ///< TRUE; while FALSE the node stands still

    /// One that stands still at its defaults, unless it is made a copy.
    SoFieldContainer* createTwin() const override
    {
        SoFieldContainer* twin = Base::createTwin();
        if (twin)
            static_cast<Animated*>(twin)->m_clockwork.stop();
        return twin;
    }
    void copyContents(const SoNode* from, SoNodeCopier& copier) override
    {
        Base::copyContents(from, copier);
        startClock();
    }

protected:
    Animated() : m_clockwork(on, [this](double seconds) { advance(seconds); }) {}

    void startClock() { m_clockwork.start(); }
    /// Moves the node on by what has passed.
    virtual void advance(double seconds) = 0;

private:
    Clockwork m_clockwork;
};

} // namespace kalmyr::detail
