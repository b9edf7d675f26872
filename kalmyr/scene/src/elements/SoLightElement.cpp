#include <kalmyr/elements/SoLightElement.h>

#include <kalmyr/elements/SoMatrixElements.h>

int SoLightElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

void SoLightElement::add(SoState* state, const SoNode* node, const SoLightRecord& light)
{
    auto& element = state->write<SoLightElement>();
    auto lights = element.value() ? std::make_shared<std::vector<SoLightRecord>>(*element.value())
                                  : std::make_shared<std::vector<SoLightRecord>>();
    lights->push_back(light);
    element.value() = std::move(lights);
    element.accumulatedBy(node);
    element.mixValueId(state->getValueId(SoModelMatrixElement::getStackIndex()));
}

const std::vector<SoLightRecord>& SoLightElement::get(SoState* state)
{
    static const std::vector<SoLightRecord> s_none;
    const auto& lights = state->get<SoLightElement>().value();
    return lights ? *lights : s_none;
}

int SoEnvironmentElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}
