#include "RotationWidget.h"

#include "BoxedWidget.h"
#include "EditorSettings.h"
#include "Looks.h"
#include "NumberBox.h"
#include "RotationParts.h"
#include "Trackball.h"

#include <kalmyr/fields/SoValueFields.h>

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

#include <array>
#include <functional>
#include <vector>

using rotations::Notation;
using rotations::Parts;

namespace {

constexpr int kNumbers = 4;
constexpr int kCompactCharacters = 5;
constexpr std::array<const char*, 3> kParts = {"Axis and angle", "Euler angles", "Quaternion"};
constexpr const char* kLabels[][kNumbers] = {{"axis x", "axis y", "axis z", "angle"},
                                             {"about x", "about y", "about z", ""},
                                             {"x", "y", "z", "w"}};
constexpr const char* kHints[] = {
    "The axis may have any length; the angle turns it right-handed",
    "Turns about the fixed axes of the parent in this order, the first letter first; which is the\n"
    "same as about the turned axes in the reverse order",
    "x, y, z: the axis times the sine of half the angle, w: its cosine; any length"};

/// Keeps the last choice for new widgets.
Notation s_chosen;

/// Of a single-value field.
const SbRotation& rotationOf(const SoField& field)
{
    return static_cast<const SoSFRotation&>(field).getValue();
}

class RotationWidget final : public BoxedWidget {
public:
    RotationWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent);

    void showValue() override;
    void commit() override;

private:
    void addBoxes();
    void buildCompact();
    void buildFull();
    QLayout* makeChoices();
    void addTrackball(QGridLayout& grid);
    void setNotation(const Notation& notation);
    void take(int component, double number);
    void turn(const SbRotation& by);
    /// Makes rotations of those from before the gesture.
    using RotationChange = std::function<bool(const SbRotation& base, SbRotation& rotation)>;
    bool changeRotations(const RotationChange& change);
    void rememberRotations();
    bool isShownAlready() const;

    Notation m_notation;
    SbRotation m_rotation; // of the first field
    std::array<QLabel*, kNumbers> m_labels{};
    QLabel* m_unitLabel = nullptr;
    QComboBox* m_parts = nullptr;
    QComboBox* m_order = nullptr;
    QToolButton* m_unit = nullptr;
    Trackball* m_ball = nullptr;
    std::vector<SbRotation> m_bases; // of the editable fields, when the gesture began
};

RotationWidget::RotationWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent)
    : BoxedWidget(edit, parent)
{
    if (form == MrbFieldWidget::Form::Compact)
        buildCompact();
    else
        buildFull();
    static bool s_unitOfPreferences = s_chosen.isInDegrees;
    if (std::exchange(s_unitOfPreferences, settings::anglesInDegrees()) != s_unitOfPreferences)
        s_chosen.isInDegrees = s_unitOfPreferences;
    Notation notation = s_chosen;
    if (form == MrbFieldWidget::Form::Compact)
        notation.parts = Parts::AxisAngle;
    setNotation(notation);
    setFocusProxy(boxes().front());
}

void RotationWidget::addBoxes()
{
    for (int i = 0; i < kNumbers; ++i) {
        auto* box = new NumberBox(FieldNumbers::Kind::Float, this);
        adopt(box);
        connect(box, &NumberBox::begun, this, &RotationWidget::rememberRotations);
        connect(box, &NumberBox::edited, this, [this, i](double number) { take(i, number); });
    }
}

void RotationWidget::buildCompact()
{
    addBoxes();
    auto* line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(looks::kSpacing);
    for (NumberBox* box : boxes()) {
        acceptLists(box);
        box->setGripShown(false);
        box->setWidthInCharacters(kCompactCharacters);
        line->addWidget(box, 1);
    }
    m_unitLabel = looks::makeLabel({}, this);
    line->addWidget(m_unitLabel);
}

void RotationWidget::buildFull()
{
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(looks::kSpacing);
    grid->addLayout(makeChoices(), 0, 0, 1, 3);
    addBoxes(); // behind the choices in the order of the Tab key
    for (int i = 0; i < kNumbers; ++i) {
        NumberBox* box = boxes()[static_cast<std::size_t>(i)];
        auto*& label = m_labels[static_cast<std::size_t>(i)];
        label = looks::makeLabel({}, this);
        box->setLabel(label);
        // Without the fourth number the others stay where they are.
        for (QWidget* widget : {static_cast<QWidget*>(box), static_cast<QWidget*>(label)}) {
            QSizePolicy policy = widget->sizePolicy();
            policy.setRetainSizeWhenHidden(true);
            widget->setSizePolicy(policy);
        }
        grid->addWidget(label, i + 1, 0);
        grid->addWidget(box, i + 1, 1);
    }
    addTrackball(*grid);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(kNumbers + 1, 1);
}

QLayout* RotationWidget::makeChoices()
{
    auto* line = new QHBoxLayout;
    line->setSpacing(looks::kSpacing);
    m_parts = new QComboBox(this);
    m_parts->setAccessibleName("Notation");
    m_parts->setToolTip("How the rotation is written");
    for (const char* name : kParts)
        m_parts->addItem(name);
    m_order = new QComboBox(this);
    m_order->setAccessibleName("Order of the turns");
    m_order->setToolTip(kHints[static_cast<int>(Parts::Euler)]);
    for (const rotations::EulerOrder& order : rotations::kEulerOrders)
        m_order->addItem(order.name);
    m_unit = looks::makeButton({}, "Unit of the angles: degrees or radians", this);
    connect(m_parts, QOverload<int>::of(&QComboBox::activated), this, [this](int index) {
        Notation notation = m_notation;
        notation.parts = static_cast<Parts>(index);
        setNotation(notation);
    });
    connect(m_order, QOverload<int>::of(&QComboBox::activated), this, [this](int index) {
        Notation notation = m_notation;
        notation.order = index;
        setNotation(notation);
    });
    connect(m_unit, &QToolButton::clicked, this, [this] {
        Notation notation = m_notation;
        notation.isInDegrees = !notation.isInDegrees;
        setNotation(notation);
    });
    line->addWidget(m_parts);
    line->addWidget(m_order);
    line->addWidget(m_unit);
    line->addStretch();
    return line;
}

void RotationWidget::addTrackball(QGridLayout& grid)
{
    m_ball = new Trackball(this);
    addControl(m_ball);
    grid.addWidget(m_ball, 1, 2, kNumbers + 1, 1, Qt::AlignTop);
    connect(m_ball, &Trackball::begun, this, [this] {
        rememberRotations();
        beginGesture();
    });
    connect(m_ball, &Trackball::turned, this, &RotationWidget::turn);
    connect(m_ball, &Trackball::ended, this, [this] { endGesture(); });
    connect(m_ball, &Trackball::cancelled, this, [this] {
        cancelGesture();
        showValue();
    });
    connect(m_ball, &Trackball::finished, this, &RotationWidget::finished);
}

void RotationWidget::setNotation(const Notation& notation)
{
    commit();
    m_notation = notation;
    s_chosen = notation;
    const auto parts = static_cast<std::size_t>(notation.parts);
    const QString unit = notation.isInDegrees ? "degrees" : "radians";
    for (int i = 0; i < kNumbers; ++i) {
        const bool isShown = i < rotations::numberCount(notation.parts);
        const bool isAngle = rotations::isAngle(notation.parts, i);
        NumberBox* box = boxes()[static_cast<std::size_t>(i)];
        box->setVisible(isShown);
        box->setName(kLabels[parts][i]);
        box->setHint(isAngle ? unit + "\n" + kHints[parts] : QString(kHints[parts]));
        if (QLabel* label = m_labels[static_cast<std::size_t>(i)]) {
            label->setText(kLabels[parts][i]);
            label->setVisible(isShown);
        }
    }
    if (m_unitLabel)
        m_unitLabel->setText(notation.isInDegrees ? "°" : "rad");
    if (m_parts) {
        m_parts->setCurrentIndex(static_cast<int>(parts));
        m_order->setCurrentIndex(notation.order);
        m_order->setVisible(notation.parts == Parts::Euler);
        m_unit->setText(unit);
        m_unit->setVisible(notation.parts != Parts::Quaternion);
    }
    showValue();
}

void RotationWidget::take(int component, double number)
{
    const Numbers shown = shownNumbers();
    const bool isOne = edit()->getFieldCount() == 1;
    bool isHeld = true;
    changeRotations([&](const SbRotation& base, SbRotation& rotation) {
        double numbers[kNumbers];
        rotations::split(m_notation, base, numbers);
        numbers[component] = number;
        return isHeld = rotations::make(m_notation, isOne ? shown.data() : numbers, rotation);
    });
    const char* why = m_notation.parts == Parts::Euler ? "An angle must be finite"
                                                       : "There is no direction in zeros and no "
                                                         "rotation in what is not finite";
    markRefusal(boxes()[static_cast<std::size_t>(component)], isHeld ? "" : why);
    if (isHeld) // else the other numbers wait for one that makes a rotation of them
        showValue();
}

void RotationWidget::turn(const SbRotation& by)
{
    changeRotations([&by](const SbRotation& base, SbRotation& rotation) {
        rotation = base * by;
        return true;
    });
    showValue();
}

bool RotationWidget::changeRotations(const RotationChange& change)
{
    if (!edit()->isInGesture() || editableFields().size() != m_bases.size())
        rememberRotations();
    std::size_t call = 0;
    return this->change([&](SoField& value) {
        SbRotation rotation;
        if (call >= m_bases.size() || !change(m_bases[call++], rotation))
            return false;
        static_cast<SoSFRotation&>(value).setValue(rotation);
        return true;
    });
}

void RotationWidget::rememberRotations()
{
    m_bases.clear();
    for (const int field : editableFields())
        edit()->read([this](const SoField& value) { m_bases.push_back(rotationOf(value)); }, field);
}

bool RotationWidget::isShownAlready() const
{
    SbRotation shown;
    return rotations::make(m_notation, shownNumbers().data(), shown) && shown == m_rotation;
}

void RotationWidget::showValue()
{
    rememberNumbers();
    if (!edit()->read([this](const SoField& value) { m_rotation = rotationOf(value); }))
        return;
    if (m_ball)
        m_ball->setRotation(m_rotation);
    if (isShownAlready())
        return;
    double numbers[kNumbers] = {};
    rotations::split(m_notation, m_rotation, numbers);
    for (int i = 0; i < rotations::numberCount(m_notation.parts); ++i)
        boxes()[static_cast<std::size_t>(i)]->setNumber(numbers[i]);
}

void RotationWidget::commit()
{
    BoxedWidget::commit();
    if (m_ball)
        m_ball->commit();
}

} // namespace

MrbFieldWidget* makeRotationWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent)
{
    return edit->getFieldType() == SoSFRotation::getClassTypeId()
               ? new RotationWidget(edit, form, parent)
               : nullptr;
}
