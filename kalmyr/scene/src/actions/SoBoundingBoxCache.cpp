#include <kalmyr/actions/SoBoundingBoxCache.h>

#include <kalmyr/core/SoNode.h>
#include <kalmyr/elements/SoCoordinateElements.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoState.h>

#include <algorithm>
#include <vector>

namespace {

std::vector<int>& dependencies()
{
    static std::vector<int> s_dependencies = {SoCoordinateElement::getStackIndex(),
                                              SoComplexityElement::getStackIndex(),
                                              SoSwitchElement::getStackIndex()};
    return s_dependencies;
}

} // namespace

SbBox3f SoBounds::project() const
{
    SbBox3f result = box;
    if (count == 1)
        result.transform(matrix);
    return result;
}

void SoBounds::add(const SbBox3f& other, const SbMatrix& toHere, const SbVec3f& otherCenter)
{
    if (other.isEmpty())
        return;
    if (count == 0) {
        box = other;
        matrix = toHere;
        center = otherCenter;
        count = 1;
        return;
    }
    if (count == 1) {
        box = project();
        matrix = SbMatrix::identity();
        count = 2;
    }
    SbBox3f here = other;
    here.transform(toHere);
    box.extendBy(here);
}

bool SoBoundingBoxCache::isValid(const SoNode* node, SoState* state) const
{
    return m_nodeId == node->getNodeId() && m_stateKey == stateKey(state);
}

void SoBoundingBoxCache::set(const SoNode* node, std::uint64_t stateKey, const SoBounds& bounds,
                             bool ownView)
{
    m_nodeId = node->getNodeId();
    m_stateKey = stateKey;
    m_bounds = bounds;
    m_ownView = ownView;
}

std::uint64_t SoBoundingBoxCache::stateKey(SoState* state)
{
    std::uint64_t key = 0;
    for (const int index : dependencies()) {
        // Defaults, by far the most frequent, cost nothing.
        if (const std::uint64_t id = state->getValueId(index))
            key = SoElement::mix(key, SoElement::mix(id, static_cast<std::uint64_t>(index)));
    }
    return key;
}

void SoBoundingBoxCache::addDependency(int elementStackIndex)
{
    std::vector<int>& all = dependencies();
    if (std::find(all.begin(), all.end(), elementStackIndex) == all.end())
        all.push_back(elementStackIndex);
}
