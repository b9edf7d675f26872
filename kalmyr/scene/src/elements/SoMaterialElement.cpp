#include <kalmyr/elements/SoMaterialElement.h>

int SoMaterialElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

int SoMaterialBindingElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}
