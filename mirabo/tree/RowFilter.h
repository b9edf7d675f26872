#pragma once

#include "mirabo/core/MainActions.h"
#include "mirabo/tree/NodeCategory.h"

namespace mirabo {

/// The categories of nodes whose rows are shown.
class RowFilter {
public:
    int mask() const { return m_mask; }
    /// Sum of NodeCategory values; others are ignored.
    void setMask(int mask) { m_mask = mask & kAllCategories; }
    bool isOn() const { return m_mask != kAllCategories; }

    /// Draggers are beyond the filter: with all categories shown nothing is hidden.
    bool hides(SoType type) const
    {
        return isOn() && (static_cast<int>(categoryOf(type)) & kAllCategories & ~m_mask) != 0;
    }

private:
    int m_mask = kAllCategories;
};

} // namespace mirabo
