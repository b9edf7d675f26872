#include "mirabo/overview/SoNodeOverviewList.h"

#include "mirabo/preferences/Settings.h"

#include <QHeaderView>

SoNodeOverviewList::SoNodeOverviewList(QWidget* parent) : SoMiraboList(parent)
{
    setObjectName("m_nodeOverviewList");
    setEmptyHint(tr("Select a node in the tree to see its fields."));
    applyNaturalWidths();
    restoreColumnWidths();
}

void SoNodeOverviewList::applyNaturalWidths()
{
    const QFontMetrics metrics = fontMetrics();
    const auto fit = [&](int column, const char* sample) {
        QTreeWidget::setColumnWidth(column, metrics.horizontalAdvance(sample) + 16);
    };
    fit(NodeType, "PerspectiveCamera");
    fit(NodeName, "Node Name (long)");
    fit(FieldTypeColumn, "MFUniformShader");
    fit(FieldName, "scaleOrientation M");
    fit(FieldValue, "0.123456, 0.123456, 0.123456");
}

void SoNodeOverviewList::restoreColumnWidths()
{
    for (int i = 0; i + 1 < columnCount(); ++i) {
        const int width = mirabo::readListColumnWidth(mirabo::kNodeOverviewGroup, i);
        if (width == -1)
            continue;
        header()->setSectionResizeMode(i + 1, QHeaderView::Interactive);
        setColumnWidth(i + 1, width);
    }
}
