#include "NurbsInput.h"

#include <kalmyr/elements/SoDrawElements.h>

#include "shapes/VertexKeys.h"

namespace kalmyr::detail {

std::vector<float> evenKnots(int numPoints, int order)
{
    std::vector<float> knots;
    const int inner = numPoints - order;
    if (inner < 0 || order < 2)
        return knots;
    knots.assign(static_cast<std::size_t>(order), 0.0f);
    for (int i = 1; i <= inner; ++i)
        knots.push_back(static_cast<float>(i) / static_cast<float>(inner + 1));
    knots.insert(knots.end(), static_cast<std::size_t>(order), 1.0f);
    return knots;
}

std::string setKnots(NurbsKnots& to, std::span<const float> knots, int numPoints, int order,
                     int most)
{
    if (numPoints > most)
        return "there are fewer control points than " + std::to_string(numPoints);
    if (order > kMaxNurbsOrder)
        return "the order " + std::to_string(order) + " is higher than "
               + std::to_string(kMaxNurbsOrder);
    const std::vector<float> even = evenKnots(knots.empty() ? numPoints : 0, order);
    const std::span<const float> used = knots.empty() ? std::span<const float>(even) : knots;
    const std::string fault = to.set(used, numPoints);
    if (fault.empty() && to.getOrder() != order)
        return std::to_string(knots.size()) + " knots do not fit " + std::to_string(numPoints)
               + " control points and the order " + std::to_string(order);
    return fault;
}

std::uint64_t nurbsShapeKey(SoState* state)
{
    const std::uint64_t key = addToKey(0, state->getValueId(SoComplexityElement::getStackIndex()));
    return addToKey(key, hasTexture(state) ? 2 : 1);
}

} // namespace kalmyr::detail
