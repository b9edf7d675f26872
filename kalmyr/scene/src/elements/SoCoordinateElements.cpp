#include <kalmyr/elements/SoCoordinateElements.h>

int SoCoordinateElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

int SoNormalElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

int SoTextureCoordinateElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

int SoNormalBindingElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

int SoTextureCoordinateBindingElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}
