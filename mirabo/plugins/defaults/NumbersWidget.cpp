#include "NumbersWidget.h"

#include "BoxedWidget.h"
#include "Looks.h"
#include "NumberBox.h"
#include "NumberText.h"

#include <kalmyr/base/SbTime.h>
#include <kalmyr/fields/SoValueFields.h>

#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QToolButton>

#include <algorithm>
#include <cmath>

namespace {

/// Least room of a box, in characters, beside others in a line.
constexpr int kInLine = 4;
constexpr int kInShortLine = 3; // compact, with many others
constexpr int kInCompactLine = 5;
constexpr int kManyNumbers = 4;

bool isOf(SoType type, SoType single, SoType multiple)
{
    return type == single || type == multiple;
}

/// Two links of a chain, in the unit square.
void drawChain(QPainter& painter)
{
    painter.translate(0.5, 0.5);
    painter.rotate(-45);
    for (const int side : {-1, 1}) {
        QPainterPath link;
        link.addRoundedRect(QRectF(-0.29, -0.19, 0.58, 0.38), 0.19, 0.19);
        link.translate(side * 0.21, 0);
        // The end of one lies above the other.
        QPainterPath gap;
        gap.addRect(QRectF(side > 0 ? -0.14 : -0.03, side > 0 ? -0.3 : 0, 0.17, 0.3));
        painter.save();
        QPainterPath all;
        all.addRect(QRectF(-1, -1, 2, 2));
        painter.setClipPath(all.subtracted(gap));
        painter.drawPath(link);
        painter.restore();
    }
}

/// A time as a date and as a span, where it makes sense as such.
QString timeHint(double seconds)
{
    constexpr double kYear = 365.25 * 86400;
    constexpr double kMost = 8000 * kYear;
    if (!std::isfinite(seconds) || std::fabs(seconds) > kMost)
        return "Seconds";
    const SbTime span(std::fabs(seconds));
    const char* pattern = span.getValue() >= 86400 ? "%D days %H:%M:%S.%I" : "%H:%M:%S.%I";
    return QString("Seconds\nAs a span: %1%2\nAs a date: %3")
        .arg(seconds < 0 ? "-" : "", span.format(pattern).getString(),
             SbTime(seconds).formatDate().getString());
}

class NumbersWidget final : public BoxedWidget {
public:
    NumbersWidget(MrbFieldEdit* edit, Form form, QWidget* parent);

    void showValue() override;

private:
    /// Kind of the value that the numbers make.
    enum class Shape { Number, Time, Vector, Plane, Box };

    static Shape shapeOf(const FieldNumbers& numbers, SoType type);
    void build(Form form);
    void addNumber(QGridLayout& grid, int component, int perLine, bool isCompact);
    void addLabels(QGridLayout& grid, int row, int column, int component, NumberBox* box);
    void addLink(QGridLayout& grid);
    void addNow(QGridLayout& grid);
    void take(int component, double number);
    bool takeLinked(int component, double number);
    bool takePlane(int component, double number);
    bool isShownAlready(const Numbers& present) const;

    Shape m_shape;
    QToolButton* m_link = nullptr;
};

NumbersWidget::NumbersWidget(MrbFieldEdit* edit, Form form, QWidget* parent)
    : BoxedWidget(edit, parent), m_shape(shapeOf(numbers(), edit->getFieldType()))
{
    build(form);
}

NumbersWidget::Shape NumbersWidget::shapeOf(const FieldNumbers& numbers, SoType type)
{
    if (isOf(type, SoSFTime::getClassTypeId(), SoMFTime::getClassTypeId()))
        return Shape::Time;
    if (isOf(type, SoSFPlane::getClassTypeId(), SoMFPlane::getClassTypeId()))
        return Shape::Plane;
    if (numbers.labels().front().startsWith("min"))
        return Shape::Box;
    return numbers.count() == 1 ? Shape::Number : Shape::Vector;
}

void NumbersWidget::build(Form form)
{
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(looks::kSpacing);
    const int count = numbers().count();
    const bool isCompact = form == Form::Compact;
    const int perLine = isCompact                 ? count
                        : m_shape == Shape::Box   ? count / 2
                        : m_shape == Shape::Plane ? count - 1
                                                  : count;
    for (int i = 0; i < count; ++i)
        addNumber(*grid, i, perLine, isCompact);
    if (m_shape == Shape::Vector && !isCompact)
        addLink(*grid);
    if (m_shape == Shape::Time && !isCompact)
        addNow(*grid);
    if (!isCompact)
        grid->setRowStretch(grid->rowCount(), 1);
    setFocusProxy(boxes().front());
}

void NumbersWidget::addNumber(QGridLayout& grid, int component, int perLine, bool isCompact)
{
    const QString label = numbers().labels()[component];
    const int count = numbers().count();
    auto* box = new NumberBox(numbers().kind(), this);
    box->setName(label.isEmpty() ? edit()->getState().fieldName : label);
    if (count > 1)
        box->setWidthInCharacters(!isCompact             ? kInLine
                                  : count > kManyNumbers ? kInShortLine
                                                         : kInCompactLine);
    // Columns of a number: that of its group, its own name, its box.
    constexpr int kColumns = 3;
    const int row = component / perLine;
    const int column = kColumns * (component % perLine);
    if (isCompact)
        box->setGripShown(count == 1);
    else if (!label.isEmpty())
        addLabels(grid, row, column, component, box);
    grid.addWidget(box, row, column + 2);
    grid.setColumnStretch(column + 2, 1);
    adopt(box);
    if (count > 1)
        acceptLists(box);
    connect(box, &NumberBox::edited, this,
            [this, component](double number) { take(component, number); });
}

void NumbersWidget::addLabels(QGridLayout& grid, int row, int column, int component, NumberBox* box)
{
    const QStringList labels = numbers().labels();
    const QString& label = labels[component];
    const QString group = label.section(' ', 0, -2);
    const bool isFirst = component == 0 || !labels[component - 1].startsWith(group + ' ');
    if (!group.isEmpty() && isFirst)
        grid.addWidget(looks::makeLabel(group, this), row, column);
    QLabel* name = looks::makeLabel(label.section(' ', -1), this);
    box->setLabel(name);
    if (group.isEmpty() && m_shape == Shape::Plane)
        grid.addWidget(name, row, column, 1, 2);
    else
        grid.addWidget(name, row, column + 1);
}

void NumbersWidget::addLink(QGridLayout& grid)
{
    m_link = looks::makeButton({}, "Keep the proportions: scale all components together", this);
    m_link->setIcon(looks::drawIcon(this, drawChain));
    m_link->setCheckable(true);
    addControl(m_link);
    grid.addWidget(m_link, 0, grid.columnCount());
}

void NumbersWidget::addNow(QGridLayout& grid)
{
    QToolButton* now = looks::makeButton("Now", "Set to the present date and time", this);
    connect(now, &QToolButton::clicked, this, [this] {
        take(0, SbTime::getTimeOfDay().getValue());
        showValue();
    });
    addControl(now);
    grid.addWidget(now, 0, grid.columnCount());
}

void NumbersWidget::take(int component, double number)
{
    bool isHeld = true; // by the type
    if (m_link && m_link->isChecked())
        isHeld = takeLinked(component, number);
    else if (m_shape == Shape::Plane)
        isHeld = takePlane(component, number);
    else
        change([this, component, number, &isHeld](SoField& value) {
            return isHeld = numbers().set(value, 0, component, number);
        });
    const char* why = m_shape == Shape::Plane ? "The normal must not be zero"
                                              : "Another component would be beyond the limits";
    markRefusal(boxes()[static_cast<std::size_t>(component)], isHeld ? "" : why);
}

bool NumbersWidget::takeLinked(int component, double number)
{
    bool isHeld = true;
    const auto at = static_cast<std::size_t>(component);
    changeNumbers([&](const Numbers& base, double* present) {
        // From the start of the gesture: typing passes through zero.
        const double factor = number / base[at];
        for (std::size_t i = 0; i < base.size(); ++i) {
            present[i] = std::isfinite(factor) ? base[i] * factor : base[i];
            if (isWhole(numbers().kind()))
                present[i] = std::round(present[i]);
            isHeld = isHeld && fitNumber(numbers().kind(), present[i]);
        }
        present[at] = number;
        return isHeld;
    });
    return isHeld;
}

bool NumbersWidget::takePlane(int component, double number)
{
    // The normal has length 1 in the field; here it stays as it is typed, number by number.
    const Numbers shown = shownNumbers();
    const bool isOne = edit()->getFieldCount() == 1;
    bool isHeld = true;
    changeNumbers([&](const Numbers& base, double* present) {
        const Numbers& start = isOne ? shown : base;
        std::copy(start.begin(), start.end(), present);
        present[component] = number;
        return isHeld = std::hypot(present[0], present[1], present[2]) > 0
                        && std::isfinite(std::hypot(present[0], present[1], present[2]));
    });
    return isHeld;
}

bool NumbersWidget::isShownAlready(const Numbers& present) const
{
    if (m_shape != Shape::Plane)
        return false;
    const std::unique_ptr<SoField> made = edit()->makeValue();
    if (!made || !numbers().setAll(*made, 0, shownNumbers().data()))
        return false;
    Numbers asMade(present.size());
    numbers().get(*made, 0, asMade.data());
    return sameNumbers(asMade, present);
}

void NumbersWidget::showValue()
{
    const Numbers present = readNumbers();
    rememberNumbers();
    if (present.empty() || isShownAlready(present))
        return;
    for (std::size_t i = 0; i < present.size(); ++i)
        boxes()[i]->setNumber(present[i]);
    if (m_shape == Shape::Time)
        boxes().front()->setHint(timeHint(present.front()));
}

} // namespace

MrbFieldWidget* makeNumbersWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent)
{
    return FieldNumbers::of(edit->getFieldType()) ? new NumbersWidget(edit, form, parent) : nullptr;
}
