#pragma once

#include <QColor>
#include <QIcon>
#include <QString>

class QLabel;
class QPainter;
class QPalette;
class QRectF;
class QToolButton;
class QWidget;

/// The common looks of the editors: colours from the palette, sizes from the font.
namespace looks {

/// Between controls.
inline constexpr int kSpacing = 4;

bool isDark(const QPalette& palette);
/// For what is wrong; readable on the palette's base.
QColor warningColor(const QPalette& palette);
/// Red, green, blue for x, y, z; readable on the palette's base.
QColor axisColor(const QPalette& palette, int axis);
/// Of frames that must be seen.
qreal lineWidth(const QWidget* widget);

/// Draws the checkers behind colours that are not opaque.
void paintCheckers(QPainter& painter, const QRectF& room, qreal size);

/// A flat button with a text, or an icon where `icon` is not null; `name` is for tool tips and
/// screen readers.
QToolButton* makeButton(const QString& text, const QString& name, QWidget* parent);
/// An icon in the colour of the palette's text, drawn in the unit square.
QIcon drawIcon(const QWidget* widget, void (*draw)(QPainter& painter));

/// The label in front of a control, dimmed where it is only the name of a number.
QLabel* makeLabel(const QString& text, QWidget* parent);

} // namespace looks
