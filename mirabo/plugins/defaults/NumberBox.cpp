#include "NumberBox.h"

#include "EditorSettings.h"
#include "Expression.h"
#include "Looks.h"
#include "MarkedLineEdit.h"
#include "NumberSteps.h"
#include "NumberText.h"

#include <kalmyr/base/SbNumber.h>

#include <QAction>
#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace {

constexpr int kWidthInCharacters = 9;

/// Three short lines, to be taken with the mouse.
class Grip final : public QWidget {
public:
    explicit Grip(QWidget* parent) : QWidget(parent)
    {
        setCursor(Qt::SizeHorCursor);
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
        setToolTip("Drag to change (Shift: faster, Ctrl: finer)");
    }
    QSize sizeHint() const override
    {
        return {fontMetrics().averageCharWidth() + 2, fontMetrics().height()};
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QColor color = palette().color(QPalette::Text);
        constexpr qreal kFaint = 0.45;
        constexpr qreal kFainter = 0.2;
        color.setAlphaF(!isEnabled() ? kFainter : underMouse() ? 1 : kFaint);
        painter.setPen(QPen(color, 1.2));
        const qreal height = fontMetrics().height() * 0.5;
        const qreal top = (this->height() - height) / 2;
        const qreal gap = width() / 4.0;
        for (int i = 1; i <= 3; ++i)
            painter.drawLine(QPointF(i * gap, top), QPointF(i * gap, top + height));
    }
    void enterEvent(QEvent*) override { update(); }
    void leaveEvent(QEvent*) override { update(); }
};

bool sameBits(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

} // namespace

NumberBox::NumberBox(FieldNumbers::Kind kind, QWidget* parent)
    : QWidget(parent), m_kind(kind), m_edit(new MarkedLineEdit(this)), m_grip(new Grip(this))
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_edit, 1);
    layout->addWidget(m_grip);
    setFocusProxy(m_edit);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setWidthInCharacters(kWidthInCharacters);
    connect(m_edit, &QLineEdit::textEdited, this, &NumberBox::takeText);
    m_edit->installEventFilter(this);
    m_grip->installEventFilter(this);
    updateHint();
    showNumber();
}

void NumberBox::setNumber(double number)
{
    m_number = m_kind == FieldNumbers::Kind::Float ? static_cast<double>(static_cast<float>(number))
                                                   : number;
    if (!isTyping())
        showNumber();
}

void NumberBox::setName(const QString& name)
{
    m_name = name;
    m_edit->setAccessibleName(name);
    updateHint();
}

void NumberBox::setHint(const QString& hint)
{
    m_hint = hint;
    updateHint();
}

void NumberBox::setLabel(QLabel* label)
{
    if (m_label)
        m_label->removeEventFilter(this);
    m_label = label;
    label->setBuddy(m_edit);
    label->setCursor(Qt::SizeHorCursor);
    label->installEventFilter(this);
    connect(label, &QObject::destroyed, this, [this, label] {
        if (m_label == label)
            m_label = nullptr;
    });
}

void NumberBox::setGripShown(bool on)
{
    m_grip->setVisible(on);
}

void NumberBox::setWidthInCharacters(int count)
{
    // Digits are as wide as each other in nearly all fonts; frame and margins take about two.
    m_edit->setMinimumWidth(m_edit->fontMetrics().horizontalAdvance('0') * (count + 2));
}

void NumberBox::setReadOnly(bool on)
{
    if (on)
        commit();
    m_edit->setReadOnly(on);
    m_grip->setEnabled(!on);
}

bool NumberBox::isReadOnly() const
{
    return m_edit->isReadOnly();
}

void NumberBox::setHex(bool on)
{
    m_isHex = on && isUnsigned(m_kind);
    if (!isTyping())
        showNumber();
}

bool NumberBox::isIllegal() const
{
    return m_edit->isIllegal();
}

const QString& NumberBox::problem() const
{
    return m_edit->problem();
}

QString NumberBox::text() const
{
    return m_edit->text();
}

void NumberBox::setPasteReader(std::function<bool(const QString& text)> reader)
{
    m_edit->setPasteReader([this, reader = std::move(reader)](const QString& text) {
        if (!reader(text))
            return false;
        endGesture();
        m_isRefused = false;
        m_edit->setProblem({});
        showNumber();
        return true;
    });
}

void NumberBox::refuse(const QString& why)
{
    m_isRefused = true;
    m_edit->setProblem(why);
}

void NumberBox::clearRefusal()
{
    if (!m_isRefused)
        return;
    m_isRefused = false;
    m_edit->setProblem({});
}

void NumberBox::commit()
{
    endGesture();
    if (!isIllegal())
        showNumber();
}

bool NumberBox::readText(double& number, QString& problem) const
{
    // The way through a double could round twice.
    float single = 0;
    if (m_kind == FieldNumbers::Kind::Float
        && SbNumber::toFloat(m_edit->text().trimmed().toStdString(), single)) {
        number = single;
        return fitNumber(m_kind, number, &problem);
    }
    const Expression read = Expression::evaluate(m_edit->text(), m_before);
    if (!read.isValid) {
        problem = QString("Column %1: %2").arg(read.column).arg(read.problem);
        return false;
    }
    number = read.number;
    return fitNumber(m_kind, number, &problem);
}

void NumberBox::takeText()
{
    enter(Gesture::Typing);
    double number = 0;
    QString problem;
    const bool isLegal = readText(number, problem);
    m_edit->setProblem(problem);
    if (isLegal)
        change(number);
}

void NumberBox::stepBy(double steps, bool isKey)
{
    if (isReadOnly())
        return;
    if (m_gesture != Gesture::Steps || m_burst.step()) {
        endGesture();
        enter(Gesture::Steps);
        m_burst.step();
    }
    const bool isTooSmall = isKey && isWhole(m_kind) && std::fabs(steps) * m_step < 1;
    m_steps += isTooSmall ? std::copysign(1 / m_step, steps) : steps;
    takeSteps(m_steps);
}

void NumberBox::startDrag(const QMouseEvent& event)
{
    m_edit->setFocus(Qt::MouseFocusReason);
    endGesture();
    enter(Gesture::Drag);
    m_dragX = event.globalX();
}

void NumberBox::drag(const QMouseEvent& event)
{
    if (m_gesture != Gesture::Drag || isReadOnly())
        return;
    const double pixels = event.globalX() - m_dragX;
    if (pixels == 0)
        return;
    m_dragX = event.globalX();
    const double pixelsPerStep = std::max(1., fontMetrics().averageCharWidth() / 2.);
    m_steps += pixels / pixelsPerStep * stepFactor(event.modifiers());
    constexpr double kFinest = 10; // parts of a step
    const double steps = std::round(m_steps * kFinest) / kFinest;
    takeSteps(steps);
}

void NumberBox::takeSteps(double steps)
{
    if (!std::isfinite(m_base))
        return;
    m_edit->setProblem({});
    change(afterSteps(m_kind, m_base, m_step, steps));
    showNumber();
}

void NumberBox::enter(Gesture gesture)
{
    if (m_gesture == gesture)
        return;
    endGesture();
    m_gesture = gesture;
    m_before = m_number;
    m_base = asShown(m_kind, m_number);
    m_step = stepOf(m_kind, m_number);
    m_steps = 0;
}

void NumberBox::change(double number)
{
    if (sameBits(number, m_number) && !m_isRefused)
        return;
    m_isRefused = false;
    if (!m_isTold) {
        m_isTold = true;
        Q_EMIT begun();
    }
    m_number = number;
    Q_EMIT edited(number);
}

void NumberBox::endGesture()
{
    if (std::exchange(m_gesture, Gesture::None) == Gesture::None)
        return;
    m_burst.end();
    if (std::exchange(m_isTold, false))
        Q_EMIT ended();
    Q_EMIT settled();
    if (!isIllegal())
        m_edit->setText(m_edit->text()); // forgets its own steps to undo
}

void NumberBox::cancel()
{
    if (m_gesture == Gesture::None && !isIllegal()) {
        Q_EMIT finished();
        return;
    }
    const bool isTold = std::exchange(m_isTold, false) || isIllegal();
    if (std::exchange(m_gesture, Gesture::None) != Gesture::None)
        m_number = m_before;
    m_burst.end();
    m_isRefused = false;
    m_edit->setProblem({});
    showNumber();
    m_edit->selectAll();
    if (isTold)
        Q_EMIT cancelled();
    Q_EMIT settled();
}

void NumberBox::showNumber()
{
    if (isIllegal())
        return;
    const QString text = m_edit->hasFocus() || m_gesture != Gesture::None
                             ? numberText(m_kind, m_number, m_isHex)
                             : roundedText();
    if (text == m_edit->text())
        return;
    m_edit->setText(text);
    m_edit->setCursorPosition(0); // the leading digits count when there is no room for all
}

/// For the keyboard: what is read back is the number.
void NumberBox::showExactly()
{
    const QString text = numberText(m_kind, m_number, m_isHex);
    if (!isIllegal() && text != m_edit->text())
        m_edit->setText(text);
}

/// As the user wants to see numbers that are not being edited.
QString NumberBox::roundedText() const
{
    const int digits = settings::digits();
    const bool isRounded = digits > 0 && !isWhole(m_kind) && std::isfinite(m_number);
    const QString text = numberText(m_kind, m_number, m_isHex);
    const QString rounded = isRounded ? QString::number(m_number, 'g', digits) : text;
    return rounded.size() < text.size() ? rounded : text;
}

void NumberBox::updateHint()
{
    QStringList lines;
    if (!m_name.isEmpty())
        lines << m_name;
    if (!m_hint.isEmpty())
        lines << m_hint;
    lines << kindText(m_kind);
    lines << expressionHelp()
          << "Up, Down, wheel, or a drag on the grip: steps (Shift: larger, Ctrl: smaller)";
    m_edit->setHint(lines.join('\n'));
}

bool NumberBox::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_edit)
        return filterEdit(event);
    return (watched == m_grip || watched == m_label) && filterHandle(event);
}

bool NumberBox::filterEdit(QEvent* event)
{
    switch (event->type()) {
    case QEvent::ShortcutOverride:
        // Escape is the box's own while there is something to give back.
        if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape
            && (m_gesture != Gesture::None || isIllegal()))
            event->accept();
        return false;
    case QEvent::KeyPress: {
        const auto& key = static_cast<const QKeyEvent&>(*event);
        switch (key.key()) {
        case Qt::Key_Up:
            stepBy(stepFactor(key.modifiers()), true);
            return true;
        case Qt::Key_Down:
            stepBy(-stepFactor(key.modifiers()), true);
            return true;
        case Qt::Key_Escape:
            cancel();
            return true;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            commit();
            m_edit->selectAll();
            if (!isIllegal())
                Q_EMIT finished();
            return true;
        default:
            return false;
        }
    }
    case QEvent::Wheel: {
        if (!m_edit->hasFocus() || isReadOnly())
            return false;
        constexpr double kNotch = 120;
        const auto& wheel = static_cast<const QWheelEvent&>(*event);
        // Some desktops turn the direction with a modifier.
        const QPoint delta = wheel.angleDelta();
        stepBy((delta.y() ? delta.y() : delta.x()) / kNotch * stepFactor(wheel.modifiers()), false);
        return true;
    }
    case QEvent::FocusIn:
        if (m_gesture == Gesture::None)
            showExactly();
        // Opened for editing: what is typed takes the place of the number.
        if (static_cast<QFocusEvent*>(event)->reason() == Qt::OtherFocusReason)
            m_edit->selectAll();
        return false;
    case QEvent::FocusOut:
        // A menu of the box's own comes back.
        if (static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason) {
            commit();
            showNumber();
        }
        return false;
    case QEvent::ContextMenu:
        showMenu(static_cast<QContextMenuEvent*>(event)->globalPos());
        return true;
    default:
        return false;
    }
}

bool NumberBox::filterHandle(QEvent* event)
{
    if (!isEnabled() || isReadOnly())
        return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        const auto& mouse = static_cast<const QMouseEvent&>(*event);
        if (mouse.button() == Qt::LeftButton)
            startDrag(mouse);
        return true;
    }
    case QEvent::MouseMove:
        drag(static_cast<const QMouseEvent&>(*event));
        return true;
    case QEvent::MouseButtonRelease:
        if (m_gesture == Gesture::Drag
            && static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton)
            commit();
        return true;
    default:
        return false;
    }
}

void NumberBox::showMenu(const QPoint& position)
{
    QMenu* menu = m_edit->makeMenu();
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (isUnsigned(m_kind)) {
        menu->addSeparator();
        QAction* hex = menu->addAction("Hexadecimal");
        hex->setCheckable(true);
        hex->setChecked(m_isHex);
        connect(hex, &QAction::toggled, this, &NumberBox::setHex);
    }
    menu->popup(position);
}
