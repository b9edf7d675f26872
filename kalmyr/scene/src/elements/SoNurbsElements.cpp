#include <kalmyr/elements/SoNurbsElements.h>

int SoHomogeneousElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

int SoProfileCoordinateElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

int SoProfileElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}
