#include <kalmyr/elements/SoTextureElement.h>

int SoTextureElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}
