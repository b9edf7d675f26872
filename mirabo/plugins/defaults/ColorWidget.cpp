#include "ColorWidget.h"

#include "BoxedWidget.h"
#include "ColorBar.h"
#include "ColorParts.h"
#include "ColorSwatch.h"
#include "Eyedropper.h"
#include "HexInput.h"
#include "Looks.h"
#include "MarkedLineEdit.h"
#include "NumberBox.h"

#include <kalmyr/fields/SoValueFields.h>

#include <QColorDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPointer>
#include <QToolButton>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr int kHsv = 3;
constexpr int kCharacters = 11; // of a box, its frame among them
constexpr double kCircle = 360;

struct Row {
    const char* label;
    const char* name;
};
constexpr Row kRgbaRows[] = {{"R", "Red"}, {"G", "Green"}, {"B", "Blue"}, {"A", "Alpha"}};
constexpr Row kHsvRows[] = {{"H", "Hue"}, {"S", "Saturation"}, {"V", "Value"}};

/// A pipette, in the unit square.
void drawPipette(QPainter& painter)
{
    painter.translate(0.5, 0.5);
    painter.rotate(45);
    painter.drawRoundedRect(QRectF(-0.1, -0.58, 0.2, 0.3), 0.1, 0.1);
    painter.drawLine(QPointF(-0.2, -0.24), QPointF(0.2, -0.24));
    const QPointF tube[] = {{-0.11, -0.2}, {-0.11, 0.3}, {0, 0.56}, {0.11, 0.3}, {0.11, -0.2}};
    painter.drawPolyline(tube, 5);
}

/// Round ones, as floats, where they make the same colour.
void splitHsv(const double* rgb, double* hsv)
{
    colors::toHsv(rgb, hsv);
    for (const double decimals : {1e3, 1e5, 1e7}) {
        double round[kHsv];
        double made[kHsv];
        std::transform(hsv, hsv + kHsv, round, [decimals](double number) {
            return static_cast<float>(std::round(number * decimals) / decimals);
        });
        colors::fromHsv(round, made);
        if (std::equal(made, made + kHsv, rgb, [](double a, double b) {
                return static_cast<float>(a) == static_cast<float>(b);
            })) {
            std::copy_n(round, kHsv, hsv);
            return;
        }
    }
}

class ColorWidget final : public BoxedWidget {
public:
    ColorWidget(MrbFieldEdit* edit, Form form, QWidget* parent);

    void showValue() override;
    bool isTyping() const override;
    void commit() override;
    void setReadOnly(bool on) override;

private:
    QLayout* makeLine(bool isCompact);
    QLayout* makeRows();
    void addRow(QGridLayout& grid, int row, const Row& names, const QString& hint);
    void connectHex();
    void takeHex(const QString& text);
    void openDialog();
    void endDialog(bool isAccepted);
    void closeDialog();
    void dropEye(bool on);
    void take(int row, double number);
    bool takeHsv(int component, double number);
    void takeColor(const QColor& color, bool withAlpha);
    void showBars();
    void showHsv();
    void showSwatch();

    int count() const { return numbers().count(); }
    NumberBox* box(int row) const { return boxes()[static_cast<std::size_t>(row)]; }
    /// The factor from a slider's position to the number.
    double scaleOf(int row) const { return row == count() ? kCircle : 1; }

    Numbers m_present; // of the first field
    ColorSwatch* m_swatch = nullptr;
    HexInput* m_hex = nullptr;
    QToolButton* m_eye = nullptr;
    std::vector<ColorBar*> m_bars; // one for each box
    QPointer<QColorDialog> m_dialog;
    QPointer<Eyedropper> m_eyedropper;
    bool m_isDialogGesture = false;
};

ColorWidget::ColorWidget(MrbFieldEdit* edit, Form form, QWidget* parent)
    : BoxedWidget(edit, parent), m_present(static_cast<std::size_t>(numbers().count()))
{
    auto* lines = new QVBoxLayout(this);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(looks::kSpacing);
    const bool isCompact = form == Form::Compact;
    lines->addLayout(makeLine(isCompact));
    if (!isCompact) {
        lines->addLayout(makeRows());
        lines->addStretch();
    }
    setFocusProxy(m_hex->lineEdit());
}

QLayout* ColorWidget::makeLine(bool isCompact)
{
    auto* line = new QHBoxLayout;
    line->setSpacing(looks::kSpacing);
    m_swatch = new ColorSwatch(this);
    connect(m_swatch, &ColorSwatch::clicked, this, &ColorWidget::openDialog);
    addControl(m_swatch);
    m_hex = new HexInput(this);
    connectHex();
    line->addWidget(m_swatch);
    line->addWidget(m_hex->lineEdit(), isCompact ? 1 : 0);
    if (isCompact)
        return line;
    m_eye = looks::makeButton({}, "Take a colour from a window: click on it (Escape: leave)", this);
    m_eye->setIcon(looks::drawIcon(this, drawPipette));
    m_eye->setCheckable(true);
    connect(m_eye, &QToolButton::toggled, this, &ColorWidget::dropEye);
    addControl(m_eye);
    line->addWidget(m_eye);
    line->addStretch();
    return line;
}

QLayout* ColorWidget::makeRows()
{
    auto* grid = new QGridLayout;
    grid->setSpacing(looks::kSpacing);
    for (int i = 0; i < count(); ++i)
        addRow(*grid, i, kRgbaRows[i], "0 to 1; numbers beyond are kept");
    for (int i = 0; i < kHsv; ++i)
        addRow(*grid, count() + i, kHsvRows[i],
               i == 0 ? "Degrees: 0 red, 120 green, 240 blue" : "0 to 1; numbers beyond are kept");
    grid->setColumnStretch(1, 1);
    return grid;
}

void ColorWidget::addRow(QGridLayout& grid, int row, const Row& names, const QString& hint)
{
    QLabel* label = looks::makeLabel(names.label, this);
    auto* bar = new ColorBar(names.name, this);
    auto* box = new NumberBox(FieldNumbers::Kind::Float, this);
    box->setName(names.name);
    box->setHint(hint);
    box->setLabel(label);
    box->setGripShown(false);
    box->setFixedWidth(fontMetrics().horizontalAdvance('0') * kCharacters);
    grid.addWidget(label, row, 0);
    grid.addWidget(bar, row, 1);
    grid.addWidget(box, row, 2);
    adopt(box);
    if (row < count())
        acceptLists(box);
    m_bars.push_back(bar);
    addControl(bar);
    connect(box, &NumberBox::edited, this, [this, row](double number) { take(row, number); });
    connect(bar, &ColorBar::moved, this, [this, row](double position) {
        take(row, static_cast<float>(position * scaleOf(row)));
    });
    connect(bar, &ColorBar::begun, this, [this] { beginGesture(); });
    connect(bar, &ColorBar::ended, this, [this] { endGesture(); });
    connect(bar, &ColorBar::cancelled, this, [this] {
        cancelGesture();
        showValue();
    });
    connect(bar, &ColorBar::finished, this, &ColorWidget::finished);
}

void ColorWidget::connectHex()
{
    connect(m_hex, &HexInput::begun, this, [this] { beginGesture(); });
    connect(m_hex, &HexInput::edited, this, &ColorWidget::takeHex);
    connect(m_hex, &HexInput::ended, this, [this] { endGesture(); });
    connect(m_hex, &HexInput::cancelled, this, [this] { cancelGesture(); });
    connect(m_hex, &HexInput::settled, this, [this] {
        if (!isTyping())
            typingEnded();
    });
    connect(m_hex, &HexInput::finished, this, &ColorWidget::finished);
}

void ColorWidget::takeHex(const QString& text)
{
    Numbers read = m_present;
    read.resize(4, NAN);
    read[3] = NAN; // unless the text tells alpha
    if (!colors::readHex(text, read.data(), count())) {
        m_hex->setProblem(count() > 3 ? "Expected #rgb, #rgba, #rrggbb, #rrggbbaa or a name"
                                      : "Expected #rgb, #rrggbb or the name of a colour");
        return;
    }
    m_hex->setProblem({});
    changeNumbers([this, &read](const Numbers& base, double* present) {
        Numbers made = base;
        std::copy_n(read.begin(), 3, made.begin());
        if (!std::isnan(read[3]))
            made[3] = read[3];
        // No other colour than was shown: that one may be finer than the text.
        const bool isShown =
            colors::hexText(made.data(), count()) == colors::hexText(base.data(), count());
        const Numbers& result =
            isShown && !colors::isBeyondLimits(base.data(), count()) ? base : made;
        std::copy_n(result.begin(), count(), present);
        return true;
    });
    m_hex->setProblem(edit()->getProblem());
    showValue();
}

void ColorWidget::openDialog()
{
    if (m_dialog) {
        m_dialog->raise();
        m_dialog->activateWindow();
        return;
    }
    BoxedWidget::commit();
    m_hex->commit();
    m_dialog = new QColorDialog(colors::toColor(m_present.data(), count()), this);
    m_dialog->setAttribute(Qt::WA_DeleteOnClose);
    m_dialog->setWindowTitle("Colour of " + edit()->getState().fieldName);
    m_dialog->setOption(QColorDialog::ShowAlphaChannel, count() > 3);
    connect(m_dialog, &QColorDialog::currentColorChanged, this, [this](const QColor& color) {
        if (!color.isValid())
            return;
        if (!std::exchange(m_isDialogGesture, true))
            beginGesture();
        takeColor(color, true);
    });
    connect(m_dialog, &QDialog::finished, this,
            [this](int result) { endDialog(result == QDialog::Accepted); });
    m_dialog->show();
}

void ColorWidget::endDialog(bool isAccepted)
{
    m_dialog = nullptr; // it deletes itself
    if (!std::exchange(m_isDialogGesture, false))
        return;
    if (isAccepted)
        endGesture();
    else
        cancelGesture();
    showValue();
}

void ColorWidget::closeDialog()
{
    if (m_dialog)
        m_dialog->accept();
}

void ColorWidget::dropEye(bool on)
{
    delete m_eyedropper;
    if (!on) {
        showValue();
        return;
    }
    BoxedWidget::commit();
    m_hex->commit();
    m_eyedropper = new Eyedropper(this);
    connect(m_eyedropper, &Eyedropper::hovered, this, [this](const QColor& color) {
        if (!color.isValid())
            return;
        m_swatch->setColor(color);
        m_hex->showText(color.name());
    });
    const auto leave = [this] {
        m_eyedropper = nullptr; // it deletes itself
        m_eye->setChecked(false);
    };
    connect(m_eyedropper, &Eyedropper::picked, this, [this, leave](const QColor& color) {
        leave();
        takeColor(color, false);
    });
    connect(m_eyedropper, &Eyedropper::givenUp, this, leave);
}

void ColorWidget::takeColor(const QColor& color, bool withAlpha)
{
    const double rgba[] = {color.redF(), color.greenF(), color.blueF(), color.alphaF()};
    change([this, &rgba, withAlpha](SoField& value) {
        double all[FieldNumbers::kMaxCount];
        numbers().get(value, 0, all);
        std::copy_n(rgba, withAlpha ? count() : 3, all);
        return numbers().setAll(value, 0, all);
    });
    showValue();
}

void ColorWidget::take(int row, double number)
{
    bool isHeld = true;
    if (row < count())
        change([&](SoField& value) { return isHeld = numbers().set(value, 0, row, number); });
    else
        isHeld = takeHsv(row - count(), number);
    markRefusal(box(row), isHeld ? "" : "A colour made of it would not be finite");
    if (isHeld)
        showValue();
}

bool ColorWidget::takeHsv(int component, double number)
{
    double shown[kHsv];
    for (int i = 0; i < kHsv; ++i)
        shown[i] = box(count() + i)->number();
    shown[component] = number;
    const bool isOne = edit()->getFieldCount() == 1;
    bool isHeld = true;
    changeNumbers([&](const Numbers& base, double* present) {
        double hsv[kHsv];
        if (isOne)
            std::copy_n(shown, kHsv, hsv);
        else
            splitHsv(base.data(), hsv);
        hsv[component] = number;
        colors::fromHsv(hsv, present);
        return isHeld = std::all_of(present, present + kHsv, [](double n) {
                   return std::fabs(n) <= std::numeric_limits<float>::max();
               });
    });
    // A slider tells the number, its box does not know of it yet.
    if (isHeld)
        box(count() + component)->setNumber(number);
    return isHeld;
}

void ColorWidget::showValue()
{
    rememberNumbers();
    const Numbers present = readNumbers();
    if (present.empty())
        return;
    m_present = present;
    m_hex->showText(colors::hexText(present.data(), count()));
    showSwatch();
    if (m_bars.empty())
        return;
    for (int i = 0; i < count(); ++i)
        box(i)->setNumber(present[static_cast<std::size_t>(i)]);
    showHsv();
    showBars();
}

void ColorWidget::showSwatch()
{
    const bool isBeyond = colors::isBeyondLimits(m_present.data(), count());
    m_swatch->setColor(colors::toColor(m_present.data(), count()), isBeyond);
    m_swatch->setToolTip(isBeyond ? "Beyond 0 to 1: the nearest colour is shown. Opens the dialog"
                                  : "Opens the colour dialog");
    m_hex->lineEdit()->setHint(isBeyond ? "Beyond 0 to 1: the nearest colour is shown"
                                        : "#rrggbb, #rgb or the name of a colour");
}

void ColorWidget::showHsv()
{
    double hsv[kHsv];
    double made[kHsv];
    for (int i = 0; i < kHsv; ++i)
        hsv[i] = box(count() + i)->number();
    colors::fromHsv(hsv, made);
    // Grey and black know no hue: it stays as it was while it makes the same colour.
    if (std::equal(made, made + kHsv, m_present.begin(), [](double a, double b) {
            return static_cast<float>(a) == static_cast<float>(b);
        }))
        return;
    splitHsv(m_present.data(), hsv);
    for (int i = 0; i < kHsv; ++i)
        box(count() + i)->setNumber(hsv[i]);
}

void ColorWidget::showBars()
{
    const auto colorWith = [this](int row, double number) {
        Numbers numbers = m_present;
        if (row < count()) {
            numbers[static_cast<std::size_t>(row)] = number;
        } else {
            double hsv[kHsv];
            for (int i = 0; i < kHsv; ++i)
                hsv[i] = box(count() + i)->number();
            if (row == count())
                hsv[1] = hsv[2] = 1; // all hues can be told apart, whatever the colour is
            hsv[row - count()] = number;
            colors::fromHsv(hsv, numbers.data());
        }
        return colors::toColor(numbers.data(), row == 3 ? count() : 3);
    };
    for (int row = 0; row < static_cast<int>(m_bars.size()); ++row) {
        ColorBar* bar = m_bars[static_cast<std::size_t>(row)];
        const int parts = row == count() ? 6 : 1;
        std::vector<QColor> gradient;
        for (int i = 0; i <= parts; ++i)
            gradient.push_back(colorWith(row, scaleOf(row) * i / parts));
        bar->setColors(std::move(gradient));
        bar->setPosition(box(row)->number() / scaleOf(row));
    }
}

bool ColorWidget::isTyping() const
{
    return m_hex->isIllegal() || BoxedWidget::isTyping();
}

void ColorWidget::commit()
{
    BoxedWidget::commit();
    for (ColorBar* bar : m_bars)
        bar->commit();
    m_hex->commit();
    closeDialog();
}

void ColorWidget::setReadOnly(bool on)
{
    BoxedWidget::setReadOnly(on);
    m_hex->lineEdit()->setReadOnly(on);
    if (!on)
        return;
    closeDialog();
    if (m_eye)
        m_eye->setChecked(false);
}

} // namespace

MrbFieldWidget* makeColorWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent)
{
    const SoType type = edit->getFieldType();
    const bool isOurs =
        type == SoSFColor::getClassTypeId() || type == SoSFColorRGBA::getClassTypeId();
    return isOurs ? new ColorWidget(edit, form, parent) : nullptr;
}
