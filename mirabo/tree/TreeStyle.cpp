#include "mirabo/tree/TreeStyle.h"

namespace mirabo {

namespace {

constexpr int kDarkLightness = 128;     ///< of 255
constexpr int kReadableLightness = 190; ///< of text on a dark background
constexpr int kMinimumContrast = 90;

bool isDark(const QPalette& palette)
{
    return palette.color(QPalette::Base).lightness() < kDarkLightness;
}

const char* const kSheet = R"(
QTreeView { border: none; outline: none; show-decoration-selected: 1; }
QTreeView::item { height: 27px; border: none; padding-right: 6px; }
QTreeView::item:hover { background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 %1, stop:1 %2); }
QTreeView::item:selected { color: %5;
    background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 %3, stop:1 %4); }
QTreeView::branch { background: palette(base); }
QTreeView::branch:selected { background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 %3, stop:1 %4); }
QTreeView::branch:has-siblings:!adjoins-item {
    border-image: url(:/Mirabo_icons/Icons/vline.png) 0; }
QTreeView::branch:has-siblings:adjoins-item {
    border-image: url(:/Mirabo_icons/Icons/branch-more.png) 0; }
QTreeView::branch:!has-children:!has-siblings:adjoins-item {
    border-image: url(:/Mirabo_icons/Icons/branch-end.png) 0; }
QTreeView::branch:closed:has-children:has-siblings, QTreeView::branch:closed:has-children:!has-siblings {
    border-image: none; image: url(:/Mirabo_icons/Icons/branch-closed.png); }
QTreeView::branch:open:has-children:has-siblings, QTreeView::branch:open:has-children:!has-siblings {
    border-image: none; image: url(:/Mirabo_icons/Icons/branch-open.png); }
)";

} // namespace

QString treeStyleSheet(const QPalette& palette)
{
    const QString sheet = QString::fromLatin1(kSheet);
    return isDark(palette) ? sheet.arg("#2b3f55", "#243549", "#3a76b8", "#2a5c96", "#ffffff")
                           : sheet.arg("#eaf3fd", "#d5e7fa", "#4a8fd8", "#2f74c0", "#ffffff");
}

QColor readableOn(const QColor& background, const QColor& color)
{
    const int contrast = qAbs(qGray(background.rgb()) - qGray(color.rgb()));
    if (background.lightness() >= kDarkLightness || contrast >= kMinimumContrast)
        return color;
    if (color.hslSaturation() == 0)
        return QColor(220, 220, 220);
    return QColor::fromHsl(color.hslHue(), color.hslSaturation(), kReadableLightness);
}

void TreeDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    const QColor wanted = option->palette.color(QPalette::Text);
    const QColor text = readableOn(option->palette.color(QPalette::Base), wanted);
    if (text != wanted) // a palette of its own for a cell takes as long as the rest
        option->palette.setColor(QPalette::Text, text);
}

} // namespace mirabo
