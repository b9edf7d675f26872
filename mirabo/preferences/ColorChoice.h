#pragma once

#include <QColor>
#include <QIcon>

#include <functional>

class QWidget;

namespace mirabo {

inline constexpr int kSwatchSize = 20; ///< in pixels of the desktop

/// A framed square of a colour, as sharp as the widget's screen.
QIcon swatchIcon(const QColor& color, const QWidget& widget);

/// Opens a dialog in which the user chooses a colour, over the window of `page`. `chosen` is called
/// when a colour is accepted, and never once the page is gone. An open dialog is brought to the
/// front instead.
void chooseColor(QWidget* page, const QColor& present,
                 const std::function<void(const QColor&)>& chosen);

} // namespace mirabo
