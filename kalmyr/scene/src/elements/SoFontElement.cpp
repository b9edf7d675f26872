#include <kalmyr/elements/SoFontElement.h>

int SoFontElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}
