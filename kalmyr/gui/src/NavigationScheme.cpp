#include "NavigationScheme.h"

#include <array>
#include <span>

namespace {

using Command = NavigationCommand;
using Event = SoKeyboardEvent;
using Drag = NavigationDrag;
using Viewer = SoGuiViewer;

constexpr float kTurn = 0.0872665f;     // 5 degrees
constexpr float kWideTurn = 0.2617994f; // 15 degrees
constexpr float kPan = 0.05f;
constexpr float kZoom = 1.25f;

enum Modifier : unsigned { PLAIN = 0, SHIFT = 1, CTRL = 2, ALT = 4 };

struct KeyRule {
    Event::Key key;
    unsigned modifiers;
    Command command;
};

constexpr Command plain(Command::Kind kind)
{
    return {kind, Viewer::FRONT, 0, 0};
}
constexpr Command side(Viewer::Side which)
{
    return {Command::SIDE, which, 0, 0};
}
constexpr Command move(Command::Kind kind, float right, float up)
{
    return {kind, Viewer::FRONT, right, up};
}

constexpr auto kCommonKeys = std::to_array<KeyRule>({
    {Event::LEFT_ARROW, PLAIN, move(Command::TURN, -kTurn, 0)},
    {Event::RIGHT_ARROW, PLAIN, move(Command::TURN, kTurn, 0)},
    {Event::DOWN_ARROW, PLAIN, move(Command::TURN, 0, -kTurn)},
    {Event::UP_ARROW, PLAIN, move(Command::TURN, 0, kTurn)},
    {Event::LEFT_ARROW, SHIFT, move(Command::PAN, -kPan, 0)},
    {Event::RIGHT_ARROW, SHIFT, move(Command::PAN, kPan, 0)},
    {Event::DOWN_ARROW, SHIFT, move(Command::PAN, 0, -kPan)},
    {Event::UP_ARROW, SHIFT, move(Command::PAN, 0, kPan)},
    {Event::EQUAL, PLAIN, move(Command::ZOOM, 1 / kZoom, 0)},
    {Event::EQUAL, SHIFT, move(Command::ZOOM, 1 / kZoom, 0)},
    {Event::PAD_ADD, PLAIN, move(Command::ZOOM, 1 / kZoom, 0)},
    {Event::MINUS, PLAIN, move(Command::ZOOM, kZoom, 0)},
    {Event::PAD_SUBTRACT, PLAIN, move(Command::ZOOM, kZoom, 0)},
    {Event::H, PLAIN, plain(Command::HOME)},
    {Event::V, PLAIN, plain(Command::VIEW_ALL)},
    {Event::F, PLAIN, plain(Command::CHOSEN)},
    {Event::S, PLAIN, plain(Command::SEEK)},
});

constexpr auto kStandardKeys = std::to_array<KeyRule>({
    {Event::HOME, PLAIN, plain(Command::HOME)},
    {Event::NUMBER_1, PLAIN, side(Viewer::FRONT)},
    {Event::NUMBER_2, PLAIN, side(Viewer::BACK)},
    {Event::NUMBER_3, PLAIN, side(Viewer::LEFT)},
    {Event::NUMBER_4, PLAIN, side(Viewer::RIGHT)},
    {Event::NUMBER_5, PLAIN, side(Viewer::TOP)},
    {Event::NUMBER_6, PLAIN, side(Viewer::BOTTOM)},
    {Event::P, PLAIN, plain(Command::OTHER_CAMERA)},
});

constexpr auto kModellingKeys = std::to_array<KeyRule>({
    {Event::HOME, PLAIN, plain(Command::VIEW_ALL)},
    {Event::PAD_1, PLAIN, side(Viewer::FRONT)},
    {Event::PAD_1, CTRL, side(Viewer::BACK)},
    {Event::PAD_3, PLAIN, side(Viewer::RIGHT)},
    {Event::PAD_3, CTRL, side(Viewer::LEFT)},
    {Event::PAD_7, PLAIN, side(Viewer::TOP)},
    {Event::PAD_7, CTRL, side(Viewer::BOTTOM)},
    {Event::PAD_5, PLAIN, plain(Command::OTHER_CAMERA)},
    {Event::PAD_4, PLAIN, move(Command::TURN, -kWideTurn, 0)},
    {Event::PAD_6, PLAIN, move(Command::TURN, kWideTurn, 0)},
    {Event::PAD_2, PLAIN, move(Command::TURN, 0, -kWideTurn)},
    {Event::PAD_8, PLAIN, move(Command::TURN, 0, kWideTurn)},
    {Event::PAD_4, CTRL, move(Command::PAN, -kPan, 0)},
    {Event::PAD_6, CTRL, move(Command::PAN, kPan, 0)},
    {Event::PAD_2, CTRL, move(Command::PAN, 0, -kPan)},
    {Event::PAD_8, CTRL, move(Command::PAN, 0, kPan)},
    {Event::PAD_PERIOD, PLAIN, plain(Command::CHOSEN)},
});

struct DragRule {
    bool left;
    bool middle;
    unsigned modifiers;
    Drag drag;
};

constexpr auto kStandardDrags = std::to_array<DragRule>({
    {true, false, PLAIN, Drag::TURN},
    {true, false, SHIFT, Drag::PAN},
    {true, false, CTRL, Drag::ZOOM},
    {false, true, PLAIN, Drag::PAN},
    {true, true, PLAIN, Drag::ZOOM},
});

constexpr auto kModellingDrags = std::to_array<DragRule>({
    {false, true, PLAIN, Drag::TURN},
    {false, true, SHIFT, Drag::PAN},
    {false, true, CTRL, Drag::ZOOM},
    {true, false, ALT, Drag::TURN}, // for pointers that have no middle button
    {true, false, ALT | SHIFT, Drag::PAN},
    {true, false, ALT | CTRL, Drag::ZOOM},
});

unsigned modifiersOf(const SoEvent& event)
{
    return (event.wasShiftDown() ? SHIFT : 0u) | (event.wasCtrlDown() ? CTRL : 0u)
           | (event.wasAltDown() ? ALT : 0u);
}

Command find(std::span<const KeyRule> rules, Event::Key key, unsigned modifiers)
{
    for (const KeyRule& rule : rules)
        if (rule.key == key && rule.modifiers == modifiers)
            return rule.command;
    return {};
}

} // namespace

Command commandOf(Viewer::Scheme scheme, const Event& event)
{
    const unsigned modifiers = modifiersOf(event);
    const Command command = scheme == Viewer::MODELLING
                                ? find(kModellingKeys, event.getKey(), modifiers)
                                : find(kStandardKeys, event.getKey(), modifiers);
    return command.kind == Command::NONE ? find(kCommonKeys, event.getKey(), modifiers) : command;
}

Drag dragOf(Viewer::Scheme scheme, bool left, bool middle, const SoEvent& event)
{
    const std::span<const DragRule> rules =
        scheme == Viewer::MODELLING ? std::span<const DragRule>(kModellingDrags) : kStandardDrags;
    const unsigned modifiers = modifiersOf(event);
    const DragRule* plainRule = nullptr;
    for (const DragRule& rule : rules) {
        if (rule.left != left || rule.middle != middle)
            continue;
        if (rule.modifiers == modifiers)
            return rule.drag;
        if (rule.modifiers == PLAIN)
            plainRule = &rule;
    }
    return plainRule ? plainRule->drag : Drag::NONE; // other modifiers change nothing
}
