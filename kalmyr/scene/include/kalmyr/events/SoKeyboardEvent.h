#pragma once

#include <kalmyr/events/SoButtonEvent.h>

/// A key went down or up.
class KALMYR_API SoKeyboardEvent final : public SoButtonEvent {
    SO_EVENT_HEADER(SoKeyboardEvent)

public:
    /// Keys that write an ASCII character when pressed alone have its code (letters the small
    /// one's). The values are stable: they are kept in preferences.
    enum Key {
        UNDEFINED = 0,
        ANY = 1,
        BACKSPACE = 8,
        TAB = 9,
        RETURN = 13,
        ESCAPE = 27,
        SPACE = 32,
        APOSTROPHE = 39,
        COMMA = 44,
        MINUS = 45,
        PERIOD = 46,
        SLASH = 47,
        NUMBER_0 = 48,
        NUMBER_1,
        NUMBER_2,
        NUMBER_3,
        NUMBER_4,
        NUMBER_5,
        NUMBER_6,
        NUMBER_7,
        NUMBER_8,
        NUMBER_9,
        SEMICOLON = 59,
        EQUAL = 61,
        BRACKETLEFT = 91,
        BACKSLASH = 92,
        BRACKETRIGHT = 93,
        GRAVE = 96,
        A = 97,
        B,
        C,
        D,
        E,
        F,
        G,
        H,
        I,
        J,
        K,
        L,
        M,
        N,
        O,
        P,
        Q,
        R,
        S,
        T,
        U,
        V,
        W,
        X,
        Y,
        Z,
        DELETE = 127,

        LEFT_SHIFT = 0x100,
        RIGHT_SHIFT,
        LEFT_CONTROL,
        RIGHT_CONTROL,
        LEFT_ALT,
        RIGHT_ALT,
        CAPS_LOCK,
        SHIFT_LOCK,
        NUM_LOCK,
        SCROLL_LOCK,

        HOME = 0x120,
        LEFT_ARROW,
        UP_ARROW,
        RIGHT_ARROW,
        DOWN_ARROW,
        PAGE_UP,
        PAGE_DOWN,
        END,
        INSERT,
        PAUSE,
        PRINT,

        PAD_0 = 0x140,
        PAD_1,
        PAD_2,
        PAD_3,
        PAD_4,
        PAD_5,
        PAD_6,
        PAD_7,
        PAD_8,
        PAD_9,
        PAD_ADD,
        PAD_SUBTRACT,
        PAD_MULTIPLY,
        PAD_DIVIDE,
        PAD_PERIOD,
        PAD_ENTER,

        F1 = 0x160,
        F2,
        F3,
        F4,
        F5,
        F6,
        F7,
        F8,
        F9,
        F10,
        F11,
        F12
    };

    Key getKey() const { return m_key; }
    void setKey(Key key) { m_key = key; }

    /// True when `event` is a keyboard event that presses (releases) `key`, ANY being every key.
    static bool isKeyPressEvent(const SoEvent* event, Key key);
    static bool isKeyReleaseEvent(const SoEvent* event, Key key);

    /// The character that the key writes on a US keyboard with the event's shift key; 0 when none.
    char getPrintableCharacter() const;

private:
    static bool isChange(const SoEvent* event, Key key, State state);

    Key m_key = UNDEFINED;
};
