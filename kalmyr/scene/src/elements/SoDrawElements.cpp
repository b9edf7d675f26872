#include <kalmyr/elements/SoDrawElements.h>

#include <kalmyr/core/SoNode.h>

int SoDrawStyleElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

int SoShapeHintsElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

int SoComplexityElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

int SoLightModelElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

int SoPickStyleElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

int SoSwitchElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

int SoOverrideElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

bool SoOverrideElement::maySet(SoState* state, const SoNode* node, Bit bit)
{
    const bool locked = (state->get<SoOverrideElement>().value() & bit) != 0;
    if (!node || !node->isOverride())
        return !locked;
    if (!locked) {
        auto& element = state->write<SoOverrideElement>();
        element.value() |= bit;
        element.accumulatedBy(node);
    }
    return true;
}
