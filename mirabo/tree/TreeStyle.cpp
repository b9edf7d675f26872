#include "mirabo/tree/TreeStyle.h"

namespace mirabo {

namespace {

constexpr int kDarkLightness = 128; ///< of 255

bool isDark(const QPalette& palette)
{
    return palette.color(QPalette::Base).lightness() < kDarkLightness;
}

const char* const kSheet = R"(
QTreeView { border: none; outline: none; show-decoration-selected: 1; }
QTreeView::item { border: none; padding-right: 6px; }
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
QTreeView::branch:closed:has-children:has-siblings:selected, QTreeView::branch:closed:has-children:!has-siblings:selected {
    image: url(:/Mirabo_icons/Icons/branch-closed-selected.png); }
QTreeView::branch:open:has-children:has-siblings:selected, QTreeView::branch:open:has-children:!has-siblings:selected {
    image: url(:/Mirabo_icons/Icons/branch-open-selected.png); }
)";

} // namespace

QString treeStyleSheet(const QPalette& palette)
{
    const QString sheet = QString::fromLatin1(kSheet);
    return isDark(palette) ? sheet.arg("#2b3f55", "#243549", "#3a76b8", "#2a5c96", "#ffffff")
                           : sheet.arg("#eaf3fd", "#d5e7fa", "#4a8fd8", "#2f74c0", "#ffffff");
}

} // namespace mirabo
