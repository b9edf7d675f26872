#include "mirabo/preferences/ColorChoice.h"

#include <QColorDialog>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QWidget>

namespace mirabo {

namespace {

constexpr char kDialogName[] = "editor_getcolor_dlg";

} // namespace

QIcon swatchIcon(const QColor& color, const QWidget& widget)
{
    const qreal scale = widget.devicePixelRatioF();
    QPixmap pixmap(QSize(kSwatchSize, kSwatchSize) * scale);
    pixmap.setDevicePixelRatio(scale);
    pixmap.fill(color);
    QPainter painter(&pixmap);
    QColor frame = widget.palette().color(QPalette::WindowText);
    frame.setAlphaF(0.5);
    painter.setPen(QPen(frame, 1));
    painter.drawRect(QRectF(0.5, 0.5, kSwatchSize - 1, kSwatchSize - 1));
    return QIcon(pixmap);
}

void chooseColor(QWidget* page, const QColor& present,
                 const std::function<void(const QColor&)>& chosen)
{
    if (auto* open = page->findChild<QColorDialog*>(kDialogName)) {
        open->raise();
        open->activateWindow();
        return;
    }
    auto* dialog = new QColorDialog(present, page);
    dialog->setObjectName(kDialogName);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAttribute(Qt::WA_QuitOnClose, false); // the host's loop ends with its own windows
    QObject::connect(dialog, &QColorDialog::colorSelected, page, [chosen](const QColor& color) {
        if (color.isValid())
            chosen(color);
    });
    dialog->open();
}

} // namespace mirabo
