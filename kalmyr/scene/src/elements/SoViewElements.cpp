#include <kalmyr/elements/SoViewElements.h>

int SoViewElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

int SoViewportRegionElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}
