#pragma once

#include "mirabo/overview/SoMiraboList.h"

/// The field list of a node overview: restores the stored column widths.
class SoNodeOverviewList final : public SoMiraboList {
    Q_OBJECT

public:
    explicit SoNodeOverviewList(QWidget* parent = nullptr);

Q_SIGNALS:
    /// Asked for from the context menu.
    void watchRequested();
    void ignoreRequested();
    void catalogPartsRequested(bool show);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void addRowActions(QMenu* menu, const SoFieldItem& row);
};
