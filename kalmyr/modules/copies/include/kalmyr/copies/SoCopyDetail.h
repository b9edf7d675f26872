#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/details/SoDetail.h>

/// Which of the copies of a group a pick went through: getDetail(group) of the picked point.
class KALMYR_VISIBLE SoCopyDetail final : public SoDetail {
    SO_DETAIL_HEADER(SoCopyDetail)

public:
    /// As for SoCopies::getCopyMatrix().
    int getCopyIndex() const { return m_index; }
    void setCopyIndex(int index) { m_index = index; }

private:
    int m_index = 0;
};
