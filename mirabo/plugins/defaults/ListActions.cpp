#include "ListActions.h"

#include <QPainter>
#include <QPainterPath>

#include <initializer_list>

namespace {

using Points = std::initializer_list<QPointF>;

void drawLine(QPainter& painter, Points points)
{
    painter.drawPolyline(points.begin(), static_cast<int>(points.size()));
}

void drawPlus(QPainter& painter, QPointF at, qreal size)
{
    drawLine(painter, {at - QPointF(size, 0), at + QPointF(size, 0)});
    drawLine(painter, {at - QPointF(0, size), at + QPointF(0, size)});
}

void drawCross(QPainter& painter, QPointF at, qreal size)
{
    drawLine(painter, {at - QPointF(size, size), at + QPointF(size, size)});
    drawLine(painter, {at - QPointF(size, -size), at + QPointF(size, -size)});
}

/// Rows of a table.
void drawRows(QPainter& painter, std::initializer_list<qreal> heights)
{
    for (const qreal y : heights)
        drawLine(painter, {{0.1, y}, {0.9, y}});
}

/// An arrow from one place to another, along an axis.
void drawArrow(QPainter& painter, QPointF from, QPointF to)
{
    constexpr qreal kHead = 0.2;
    const QPointF along = to - from;
    const QPointF back = along / (std::abs(along.x()) + std::abs(along.y())) * kHead;
    const QPointF aside(back.y(), back.x());
    drawLine(painter, {from, to});
    drawLine(painter, {to - back + aside, to, to - back - aside});
}

void drawSort(QPainter& painter, bool isDescending)
{
    const qreal top = isDescending ? 0.9 : 0.1;
    const qreal bottom = 1 - top;
    for (const qreal part : {0.0, 1.0 / 3, 2.0 / 3, 1.0}) {
        const qreal y = top + (bottom - top) * part;
        drawLine(painter, {{0.05, y}, {0.15 + 0.4 * part, y}});
    }
    drawArrow(painter, {0.8, 0.08}, {0.8, 0.92});
}

void drawPage(QPainter& painter, QPointF at)
{
    painter.drawRect(QRectF(at, QSizeF(0.5, 0.62)));
}

const ListActionEntry kActions[] = {
    {ListAction::InsertBefore, "Insert Before", "Insert values in front of the selected ones",
     "Ins", ListNeed::Nothing, ListUse::Make, false,
     [](QPainter& p) {
         drawPlus(p, {0.5, 0.25}, 0.2);
         drawRows(p, {0.66, 0.9});
     }},
    {ListAction::InsertAfter, "Insert After", "Insert values behind the selected ones", "Alt+Ins",
     ListNeed::Nothing, ListUse::Make, false,
     [](QPainter& p) {
         drawRows(p, {0.1, 0.34});
         drawPlus(p, {0.5, 0.75}, 0.2);
     }},
    {ListAction::Append, "Append", "Add a value at the end", "Ctrl+Alt+Ins", ListNeed::Nothing,
     ListUse::Make, false,
     [](QPainter& p) {
         drawRows(p, {0.1, 0.3, 0.5});
         drawPlus(p, {0.72, 0.78}, 0.18);
     }},
    {ListAction::Delete, "Delete", "Delete the rows with selected cells", "Del",
     ListNeed::Selection, ListUse::Rearrange, true,
     [](QPainter& p) {
         drawCross(p, {0.5, 0.5}, 0.32);
     }},
    {ListAction::MoveUp, "Move Up", "Move the rows with selected cells one place up", "Alt+Up",
     ListNeed::Selection, ListUse::Rearrange, false,
     [](QPainter& p) {
         drawArrow(p, {0.5, 0.9}, {0.5, 0.1});
     }},
    {ListAction::MoveDown, "Move Down", "Move the rows with selected cells one place down",
     "Alt+Down", ListNeed::Selection, ListUse::Rearrange, true,
     [](QPainter& p) {
         drawArrow(p, {0.5, 0.1}, {0.5, 0.9});
     }},
    {ListAction::SortAscending, "Sort Ascending",
     "Sort the selected rows, or all, by the current column; the least first", "Alt+Shift+Up",
     ListNeed::TwoValues, ListUse::Make, false, [](QPainter& p) { drawSort(p, false); }},
    {ListAction::SortDescending, "Sort Descending",
     "Sort the selected rows, or all, by the current column; the greatest first", "Alt+Shift+Down",
     ListNeed::TwoValues, ListUse::Make, true, [](QPainter& p) { drawSort(p, true); }},
    {ListAction::FillDown, "Fill Down", "Copy the first selected cell to those below", "Ctrl+D",
     ListNeed::Selection, ListUse::Make, false,
     [](QPainter& p) {
         p.drawRect(QRectF(0.2, 0.06, 0.6, 0.24));
         drawArrow(p, {0.5, 0.42}, {0.5, 0.94});
     }},
    {ListAction::Set, "Set...", "Set all selected cells to one value", "Ctrl+E",
     ListNeed::Selection, ListUse::Make, false,
     [](QPainter& p) {
         drawRows(p, {0.36, 0.64});
     }},
    {ListAction::Add, "Add...", "Add a number to all selected cells", "Ctrl++", ListNeed::Selection,
     ListUse::Make, false,
     [](QPainter& p) {
         drawPlus(p, {0.5, 0.5}, 0.4);
     }},
    {ListAction::Multiply, "Multiply...", "Multiply all selected cells by a number", "Ctrl+*",
     ListNeed::Selection, ListUse::Make, true,
     [](QPainter& p) {
         for (const qreal turn : {0.0, 60.0, 120.0}) {
             p.save();
             p.translate(0.5, 0.5);
             p.rotate(turn);
             drawLine(p, {{0, -0.4}, {0, 0.4}});
             p.restore();
         }
     }},
    {ListAction::Copy, "Copy", "Copy the selected cells, as spreadsheets do", "Ctrl+C",
     ListNeed::Selection, ListUse::Read, false,
     [](QPainter& p) {
         drawPage(p, {0.12, 0.06});
         drawPage(p, {0.38, 0.32});
     }},
    {ListAction::Paste, "Paste",
     "Paste cells from the current one on; what goes beyond the end is added", "Ctrl+V",
     ListNeed::Nothing, ListUse::Make, true,
     [](QPainter& p) {
         p.drawRect(QRectF(0.12, 0.16, 0.76, 0.78));
         p.drawRect(QRectF(0.35, 0.04, 0.3, 0.22));
         drawLine(p, {{0.3, 0.5}, {0.7, 0.5}});
         drawLine(p, {{0.3, 0.7}, {0.7, 0.7}});
     }},
    {ListAction::GoTo, "Go to Row...", "Show the row of an index", "Ctrl+G", ListNeed::Values,
     ListUse::Read, false,
     [](QPainter& p) {
         drawArrow(p, {0.05, 0.5}, {0.65, 0.5});
         drawLine(p, {{0.88, 0.1}, {0.88, 0.9}});
     }},
    {ListAction::SetCount, "Set Number of Values...", "Add default values or remove the last ones",
     "Ctrl+Shift+N", ListNeed::Nothing, ListUse::Make, false,
     [](QPainter& p) {
         for (const qreal at : {0.34, 0.66}) {
             drawLine(p, {{at + 0.06, 0.08}, {at - 0.06, 0.92}});
             drawLine(p, {{0.1, at}, {0.9, at}});
         }
     }},
};

} // namespace

std::span<const ListActionEntry> listActions()
{
    return kActions;
}
