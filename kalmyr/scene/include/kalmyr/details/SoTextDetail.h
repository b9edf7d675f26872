#pragma once

#include <kalmyr/details/SoDetail.h>

/// A character of a text: the index of its string in the shape, and its own in the string, counted
/// in characters of Unicode in the order of the string, not of the screen. Of several that are
/// drawn as one (a letter and its accent, a ligature) the first.
class KALMYR_API SoTextDetail final : public SoDetail {
    SO_DETAIL_HEADER(SoTextDetail)

public:
    int getStringIndex() const { return m_string; }
    int getCharacterIndex() const { return m_character; }
    void setStringIndex(int i) { m_string = i; }
    void setCharacterIndex(int i) { m_character = i; }

private:
    int m_string = 0;
    int m_character = 0;
};
