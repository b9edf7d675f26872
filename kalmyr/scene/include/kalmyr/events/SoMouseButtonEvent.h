#pragma once

#include <kalmyr/events/SoButtonEvent.h>

/// A mouse button went down or up.
class KALMYR_API SoMouseButtonEvent final : public SoButtonEvent {
    SO_EVENT_HEADER(SoMouseButtonEvent)

public:
    enum Button { ANY, BUTTON1, BUTTON2, BUTTON3, BUTTON4, BUTTON5 };

    /// BUTTON1 is the left, BUTTON2 the middle, BUTTON3 the right one.
    Button getButton() const { return m_button; }
    void setButton(Button button) { m_button = button; }
    /// The second press of a double click.
    bool isDoubleClick() const { return m_doubleClick; }
    void setDoubleClick(bool on) { m_doubleClick = on; }

    /// True when `event` is a mouse button event that presses (releases) `button`, ANY being every
    /// button.
    static bool isPressEvent(const SoEvent* event, Button button);
    static bool isReleaseEvent(const SoEvent* event, Button button);

private:
    static bool isChange(const SoEvent* event, Button button, State state);

    Button m_button = ANY;
    bool m_doubleClick = false;
};
