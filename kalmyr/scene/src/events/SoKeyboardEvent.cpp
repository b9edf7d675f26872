#include <kalmyr/events/SoKeyboardEvent.h>

#include <string_view>

namespace {

SoType s_type;

} // namespace

SoType SoKeyboardEvent::getClassTypeId()
{
    return s_type;
}

void SoKeyboardEvent::initClass()
{
    s_type = SoType::createType(SoButtonEvent::getClassTypeId(), SbName("KeyboardEvent"));
}

bool SoKeyboardEvent::isKeyPressEvent(const SoEvent* event, Key key)
{
    return isChange(event, key, DOWN);
}

bool SoKeyboardEvent::isKeyReleaseEvent(const SoEvent* event, Key key)
{
    return isChange(event, key, UP);
}

bool SoKeyboardEvent::isChange(const SoEvent* event, Key key, State state)
{
    if (!event || !event->isOfType(s_type))
        return false;
    const auto* own = static_cast<const SoKeyboardEvent*>(event);
    return own->getState() == state && (key == ANY || own->m_key == key);
}

char SoKeyboardEvent::getPrintableCharacter() const
{
    constexpr std::string_view kPlain = "`1234567890-=[]\\;',./";
    constexpr std::string_view kShifted = "~!@#$%^&*()_+{}|:\"<>?";
    if (m_key >= PAD_0 && m_key <= PAD_9)
        return static_cast<char>('0' + (m_key - PAD_0));
    if (m_key >= PAD_ADD && m_key <= PAD_PERIOD)
        return "+-*/."[m_key - PAD_ADD];
    if (m_key < SPACE || m_key >= DELETE)
        return 0;
    const char c = static_cast<char>(m_key);
    if (!wasShiftDown())
        return c;
    if (m_key >= A && m_key <= Z)
        return static_cast<char>(c - 'a' + 'A');
    const auto at = kPlain.find(c);
    return at == std::string_view::npos ? c : kShifted[at];
}
