#include "mirabo/overview/SoHeaderView.h"

#include <QMouseEvent>

SoHeaderView::SoHeaderView(QWidget* parent) : QHeaderView(Qt::Horizontal, parent)
{
    setSectionsClickable(true);
    setHighlightSections(false);
    setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter); // as the cells below
}

void SoHeaderView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::RightButton)
        Q_EMIT rightClicked(event->globalPos());
    QHeaderView::mouseReleaseEvent(event);
}
