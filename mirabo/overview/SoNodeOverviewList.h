#pragma once

#include "mirabo/overview/SoMiraboList.h"

/// The field list of a node overview: restores the stored column widths.
class SoNodeOverviewList final : public SoMiraboList {
    Q_OBJECT

public:
    explicit SoNodeOverviewList(QWidget* parent = nullptr);

private:
    void applyNaturalWidths();
    void restoreColumnWidths();
};
