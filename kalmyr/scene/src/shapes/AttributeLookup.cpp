#include "AttributeLookup.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/core/SoNode.h>

namespace kalmyr::detail {

void AttributeLookup::chooseMode(int binding, bool indexed)
{
    const bool indexedBinding = binding == SoBinding::PER_PART_INDEXED
                                || binding == SoBinding::PER_FACE_INDEXED
                                || binding == SoBinding::PER_VERTEX_INDEXED;
    m_explicit = indexed && indexedBinding;
    switch (binding) {
    case SoBinding::PER_PART:
    case SoBinding::PER_PART_INDEXED:
        m_mode = PART;
        break;
    case SoBinding::PER_FACE:
    case SoBinding::PER_FACE_INDEXED:
        m_mode = FACE;
        break;
    case SoBinding::PER_VERTEX:
        m_mode = CORNER;
        break;
    case SoBinding::PER_VERTEX_INDEXED:
        m_mode = indexed ? SLOT : COORDINATE;
        break;
    default:
        m_mode = FIRST;
        break;
    }
}

bool AttributeLookup::hasEnough(const Counts& counts) const
{
    if (m_explicit)
        return true;
    switch (m_mode) {
    case FACE:
        return m_size >= counts.faces;
    case PART:
        return m_size >= counts.parts;
    case CORNER:
        return m_size >= counts.corners;
    case COORDINATE:
        return static_cast<std::int64_t>(m_size) >= counts.positions - m_firstCoord;
    default:
        return true;
    }
}

void warnOf(const Fault& fault, const SoNode* node)
{
    if (!fault.field)
        return;
    const char* type = node ? node->getTypeId().getName().getString() : "shape";
    const char* name = node ? node->getName().getString() : "";
    const SbString place(fault.place);
    if (fault.limit == 0) {
        SoDebugError::postWarning(type, "\"%s\": %s[%s] is %lld, but there are no values; left out",
                                  name, fault.field, place.getString(), fault.index);
        return;
    }
    SoDebugError::postWarning(type, "\"%s\": %s[%s] is %lld, out of the range 0 to %s; left out",
                              name, fault.field, place.getString(), fault.index,
                              SbString(fault.limit - 1).getString());
}

} // namespace kalmyr::detail
