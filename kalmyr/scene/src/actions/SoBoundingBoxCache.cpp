#include <kalmyr/actions/SoBoundingBoxCache.h>

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNotification.h>
#include <kalmyr/elements/SoCoordinateElements.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoState.h>
#include <kalmyr/fields/SoMNodeField.h>

#include "actions/BoundsRun.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>
#include <vector>

namespace {

std::vector<int>& dependencies()
{
    static std::vector<int> s_dependencies = {SoCoordinateElement::getStackIndex(),
                                              SoComplexityElement::getStackIndex(),
                                              SoSwitchElement::getStackIndex()};
    return s_dependencies;
}

/// Whether boxes grow under the matrix: its axes are not those of the space it leads to.
bool isAskew(const SbMatrix& matrix)
{
    constexpr float kParallel = 1e-4f;
    for (int i = 0; i < 3; ++i) {
        float sizes[3] = {std::abs(matrix[i][0]), std::abs(matrix[i][1]), std::abs(matrix[i][2])};
        std::sort(std::begin(sizes), std::end(sizes));
        if (sizes[1] > kParallel * sizes[2])
            return true;
    }
    return !matrix.isAffine();
}

/// Square of a diagonal that rotations do not change, under a matrix.
float diagonal2(const SbBox3f& box, const SbMatrix& matrix)
{
    const SbVec3f size = box.getSize();
    float sum = 0;
    for (int i = 0; i < 3; ++i)
        sum += size[i] * size[i] * SbVec3f(matrix[i][0], matrix[i][1], matrix[i][2]).sqrLength();
    return sum;
}

float diagonal2(const SbBox3f& box)
{
    return box.getSize().sqrLength();
}

/// Of two boxes that hold the same; the first where rounding leaves nothing.
SbBox3f intersection(const SbBox3f& a, const SbBox3f& b)
{
    SbVec3f low, high;
    for (int i = 0; i < 3; ++i) {
        low[i] = std::max(a.getMin()[i], b.getMin()[i]);
        high[i] = std::min(a.getMax()[i], b.getMax()[i]);
        if (low[i] > high[i])
            return a;
    }
    return {low, high};
}

/// The owner's list of children became longer, and not the list of nodes in one of its fields.
bool isAppendedChild(const SoNotification& notification)
{
    return notification.kind == SoNotification::CHILD_ADDED
           && (!notification.field
               || static_cast<const SoMNodeField*>(notification.field)->isBound());
}

} // namespace

SbBox3f SoBounds::project() const
{
    SbBox3f result = box;
    if (inOwnSpace)
        result.transform(matrix);
    return result;
}

bool SoBoundsUnion::isTurnedMass(const SoBounds& bounds, const SbMatrix& toHere)
{
    return (bounds.count > 1 || bounds.holdsSeveral) && isAskew(bounds.matrixTo(toHere));
}

void SoBoundsUnion::begin(const SoBounds& other, const SbMatrix& toHere)
{
    m_bounds.box = other.box;
    m_bounds.matrix = other.matrixTo(toHere);
    m_bounds.center = other.getOwnCenter();
    m_bounds.count = 1;
    m_bounds.inOwnSpace = true;
    m_bounds.holdsSeveral = other.count > 1 || other.holdsSeveral;
}

void SoBoundsUnion::turnTo(const SbBox3f& box, const SbMatrix& matrix)
{
    bool invertible = false;
    const SbMatrix inverse = matrix.inverse(&invertible);
    m_turned.reset(invertible ? new Turned{box, matrix, inverse} : nullptr);
}

/// From the only box to the common one.
void SoBoundsUnion::flatten()
{
    if (m_bounds.holdsSeveral && isAskew(m_bounds.matrix))
        turnTo(m_bounds.box, m_bounds.matrix);
    m_bounds.box = m_bounds.project();
    m_bounds.matrix = SbMatrix::identity();
    m_bounds.inOwnSpace = false;
    m_bounds.count = 2;
}

void SoBoundsUnion::addTurned(const SbBox3f& box, const SbMatrix& matrix, bool isMass)
{
    // The largest box decides.
    if (isMass && isAskew(matrix) && diagonal2(box, matrix) > diagonal2(m_bounds.box)) {
        turnTo(box, matrix);
        if (m_turned) {
            SbBox3f before = m_bounds.box;
            before.transform(m_turned->fromHere);
            m_turned->box.extendBy(before);
        }
    } else if (m_turned) {
        SbBox3f there = box;
        there.transform(matrix * m_turned->fromHere);
        m_turned->box.extendBy(there);
    }
}

void SoBoundsUnion::add(const SoBounds& other, const SbMatrix& toHere)
{
    if (other.isEmpty())
        return;
    if (isEmpty()) {
        begin(other, toHere);
        return;
    }
    if (m_bounds.count == 1)
        flatten();
    const SbMatrix matrix = other.matrixTo(toHere);
    const bool isMass = other.count > 1 || other.holdsSeveral;
    if (isMass || m_turned)
        addTurned(other.box, matrix, isMass);
    SbBox3f here = other.box;
    here.transform(matrix);
    m_bounds.box.extendBy(here);
    // Kept while it is the smaller one, which nothing without bounds is.
    if (m_turned && !(diagonal2(m_turned->box, m_turned->toHere) < diagonal2(m_bounds.box)))
        m_turned.reset();
}

void SoBoundsUnion::add(const SoBounds& other, const SbMatrix& toHere, const SbBox3f& projected)
{
    if (m_bounds.count > 1 && !m_turned)
        m_bounds.box.extendBy(projected);
    else
        add(other, toHere);
}

void SoBoundsUnion::addSeveral(const SbBox3f& box)
{
    if (box.isEmpty())
        return;
    if (m_bounds.count == 1)
        flatten();
    m_bounds.count = 2;
    m_bounds.box.extendBy(box);
    if (m_turned)
        addTurned(box, SbMatrix::identity(), false);
}

SoBounds SoBoundsUnion::get() const
{
    SoBounds result = m_bounds;
    if (m_turned) {
        result.box = m_turned->box;
        result.matrix = m_turned->toHere;
        result.inOwnSpace = true;
    }
    return result;
}

SoBounds SoBoundsUnion::getAxisParallel() const
{
    SoBounds result = m_bounds;
    if (m_turned) {
        SbBox3f other = m_turned->box;
        other.transform(m_turned->toHere);
        result.box = intersection(result.box, other);
    }
    return result;
}

SoBoundingBoxCache::SoBoundingBoxCache() = default;
SoBoundingBoxCache::~SoBoundingBoxCache() = default;

void SoBoundingBoxCache::noteInRun(const SoNotification& notification)
{
    // Without a link below the change is the owner's own: its fields or its list of children.
    if (notification.chain)
        m_run->note(static_cast<const SoNode*>(notification.chain->container));
    else if (isAppendedChild(notification) && !notification.child->affectsState())
        m_run->append(notification.child);
    else
        m_run->broken = true;
}

void SoBoundingBoxCache::renewRun(int first, const SoChildList& children, std::uint64_t stateKey)
{
    if (std::exchange(m_run, nullptr))
        return;
    const auto begin = m_parts.begin() + first;
    if (!std::all_of(begin, m_parts.begin() + children.getLength(),
                     [this](const Part& part) { return canRun(part); }))
        return;
    m_run = std::make_unique<kalmyr::detail::BoundsRun>();
    m_run->first = first;
    m_run->numChildren = children.getLength();
    m_run->stateKey = stateKey;
    for (int i = first; i < children.getLength(); ++i)
        m_run->places.emplace_back(children[i], i);
    std::sort(m_run->places.begin(), m_run->places.end());
    m_run->boxes.build(m_run->places.size(),
                       [begin](std::size_t i) { return begin[static_cast<long>(i)].projected; });
}

kalmyr::detail::BoundsRun* SoBoundingBoxCache::findRun(int first, const SoChildList& children,
                                                       std::uint64_t stateKey)
{
    const bool holds = m_run && !m_run->broken && m_run->first == first
                       && m_run->numChildren == children.getLength() && m_run->stateKey == stateKey;
    return holds ? m_run.get() : nullptr;
}

void SoBoundingBoxCache::dropRun()
{
    m_run.reset();
}

bool SoBoundingBoxCache::exchangeInRun(int index)
{
    if (!canRun(getPart(index)))
        return false;
    const int first = m_run->first;
    m_run->boxes.exchanged(static_cast<std::size_t>(index - first), [&](std::size_t i) {
        return getPart(first + static_cast<int>(i)).projected;
    });
    return true;
}

bool SoBoundingBoxCache::knowsPart(int index, const SoNode* child, std::uint64_t stateKey) const
{
    const auto at = static_cast<std::size_t>(index);
    return at < m_parts.size() && m_parts[at].node == child
           && m_parts[at].nodeId == child->getNodeId() && m_parts[at].stateKey == stateKey;
}

void SoBoundingBoxCache::setPart(int index, int numChildren, const SoNode* child,
                                 std::uint64_t stateKey, const SoBounds& bounds, bool ownView)
{
    const auto at = static_cast<std::size_t>(index);
    m_parts.resize(std::max(static_cast<std::size_t>(numChildren), at + 1));
    m_partBounds.resize(m_parts.size());
    m_parts[at] = {child,    child->getNodeId(),
                   stateKey, bounds.project(),
                   ownView,  SoBoundsUnion::isTurnedMass(bounds, SbMatrix::identity())};
    m_partBounds[at] = bounds;
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
