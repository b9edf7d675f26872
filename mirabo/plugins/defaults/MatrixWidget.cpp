#include "MatrixWidget.h"

#include "BoxedWidget.h"
#include "Looks.h"
#include "MatrixParts.h"
#include "NumberBox.h"

#include <kalmyr/fields/SoValueFields.h>

#include <QButtonGroup>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kElements = 16;
constexpr int kCharacters = 3; // at least; four boxes share the width of a dock

constexpr const char* kRows[] = {"x axis", "y axis", "z axis", "origin"};
constexpr const char* kPartRows[] = {"translation", "rotation", "scale", "shear"};
constexpr const char* kPartNames[] = {"translation x",    "translation y",    "translation z",
                                      "rotation about x", "rotation about y", "rotation about z",
                                      "scale x",          "scale y",          "scale z",
                                      "shear x with y",   "shear x with z",   "shear y with z"};
constexpr const char* kPartHints[] = {"Happens last",
                                      "Degrees, about the fixed axes: first x, then y, then z",
                                      "Happens first; a negative one mirrors",
                                      "How far a point goes aside with the other coordinate"};

/// Page shown last, for the widgets to come.
int s_page = 0;

const SbMatrix& matrixOf(const SoField& field)
{
    return static_cast<const SoSFMatrix&>(field).getValue();
}

bool sameMatrix(const SbMatrix& a, const SbMatrix& b)
{
    return kalmyr::isSameValue(a, b);
}

class MatrixWidget final : public BoxedWidget {
public:
    MatrixWidget(MrbFieldEdit* edit, QWidget* parent);

    void showValue() override;

private:
    enum Page { Elements, Parts, Problem };
    using Operation = SbMatrix (*)(const SbMatrix& matrix);

    QLayout* makePageButtons();
    QLayout* makeOperations();
    QToolButton* addOperation(QLayout& line, const char* text, const char* name,
                              Operation operation);
    QWidget* makeElements();
    QWidget* makeParts();
    NumberBox* addBox(const QString& name, const QString& hint);
    void choosePage(int page);
    void takeElement(int element, double number);
    void takePart(int part, double number);
    NumberBox* element(int index) const { return boxes()[static_cast<std::size_t>(index)]; }
    NumberBox* part(int index) const
    {
        return boxes()[static_cast<std::size_t>(kElements + index)];
    }
    MatrixParts::Numbers shownParts() const;
    void showElements();
    void showParts();

    SbMatrix m_matrix; // of the first field
    QButtonGroup* m_pages;
    QToolButton* m_inverse = nullptr;
    QStackedWidget* m_stack;
    QLabel* m_problem;
};

MatrixWidget::MatrixWidget(MrbFieldEdit* edit, QWidget* parent)
    : BoxedWidget(edit, parent),
      m_pages(new QButtonGroup(this)),
      m_stack(new QStackedWidget(this)),
      m_problem(looks::makeLabel({}, this))
{
    auto* lines = new QVBoxLayout(this);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(looks::kSpacing);
    lines->addLayout(makePageButtons());
    lines->addWidget(m_stack);
    lines->addLayout(makeOperations());
    lines->addStretch();
    m_stack->addWidget(makeElements());
    m_stack->addWidget(makeParts());
    m_stack->addWidget(m_problem);
    m_problem->setWordWrap(true);
    m_problem->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    choosePage(s_page);
}

QLayout* MatrixWidget::makePageButtons()
{
    auto* line = new QHBoxLayout;
    line->setSpacing(looks::kSpacing);
    const auto addPage = [&](int page, const char* text, const char* name) {
        QToolButton* button = looks::makeButton(text, name, this);
        button->setCheckable(true);
        m_pages->addButton(button, page);
        line->addWidget(button);
    };
    addPage(Elements, "4 × 4", "The sixteen numbers");
    addPage(Parts, "Parts", "As scale, shear, rotation and translation");
    connect(m_pages, &QButtonGroup::idClicked, this, &MatrixWidget::choosePage);
    line->addStretch();
    return line;
}

QLayout* MatrixWidget::makeOperations()
{
    auto* line = new QHBoxLayout;
    line->setSpacing(looks::kSpacing);
    addOperation(*line, "Identity", "Set to the identity",
                 [](const SbMatrix&) { return SbMatrix(); });
    m_inverse = addOperation(*line, "Inverse", "Invert",
                             [](const SbMatrix& matrix) { return matrix.inverse(); });
    addOperation(*line, "Transpose", "Exchange rows and columns",
                 [](const SbMatrix& matrix) { return matrix.transpose(); });
    line->addStretch();
    return line;
}

QToolButton* MatrixWidget::addOperation(QLayout& line, const char* text, const char* name,
                                        Operation operation)
{
    QToolButton* button = looks::makeButton(text, name, this);
    addControl(button);
    line.addWidget(button);
    connect(button, &QToolButton::clicked, this, [this, operation] {
        commit();
        change([operation](SoField& value) {
            static_cast<SoSFMatrix&>(value).setValue(operation(matrixOf(value)));
            return true;
        });
        showValue();
    });
    return button;
}

NumberBox* MatrixWidget::addBox(const QString& name, const QString& hint)
{
    auto* box = new NumberBox(FieldNumbers::Kind::Float, this);
    box->setName(name);
    box->setHint(hint);
    box->setWidthInCharacters(kCharacters);
    adopt(box);
    return box;
}

QWidget* MatrixWidget::makeElements()
{
    auto* page = new QWidget(this);
    auto* grid = new QGridLayout(page);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(looks::kSpacing);
    for (int i = 0; i < kElements; ++i) {
        const int row = i / 4;
        const int column = i % 4;
        if (column == 0)
            grid->addWidget(looks::makeLabel(kRows[row], page), row, 0);
        NumberBox* box = addBox(
            QString("row %1, column %2").arg(row + 1).arg(column + 1),
            QString("Where the %1 goes; points are multiplied from the left").arg(kRows[row]));
        acceptLists(box);
        connect(box, &NumberBox::edited, this,
                [this, i](double number) { takeElement(i, number); });
        grid->addWidget(box, row, column + 1);
    }
    return page;
}

QWidget* MatrixWidget::makeParts()
{
    auto* page = new QWidget(this);
    auto* grid = new QGridLayout(page);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(looks::kSpacing);
    for (int i = 0; i < static_cast<int>(std::size(kPartNames)); ++i) {
        const int row = i / 3;
        if (i % 3 == 0)
            grid->addWidget(looks::makeLabel(kPartRows[row], page), row, 0);
        QLabel* label = looks::makeLabel(QString(kPartNames[i]).section(' ', -1), page);
        if (row == MatrixParts::kShear / 3)
            label->setText(QStringList{"xy", "xz", "yz"}[i % 3]);
        NumberBox* box = addBox(kPartNames[i], kPartHints[row]);
        box->setLabel(label);
        connect(box, &NumberBox::edited, this, [this, i](double number) { takePart(i, number); });
        grid->addWidget(label, row, 2 * (i % 3) + 1);
        grid->addWidget(box, row, 2 * (i % 3) + 2);
    }
    return page;
}

void MatrixWidget::choosePage(int page)
{
    commit();
    s_page = page;
    m_pages->button(page)->setChecked(true);
    m_stack->setCurrentIndex(page);
    showValue();
}

void MatrixWidget::takeElement(int index, double number)
{
    change(
        [this, index, number](SoField& value) { return numbers().set(value, 0, index, number); });
    markRefusal(element(index), {});
    showValue();
}

void MatrixWidget::takePart(int index, double number)
{
    const MatrixParts::Numbers shown = shownParts();
    const bool isOne = edit()->getFieldCount() == 1;
    QString problem;
    changeNumbers([&](const Numbers& base, double* present) {
        SbMatrix before;
        std::transform(base.begin(), base.end(), before[0],
                       [](double n) { return static_cast<float>(n); });
        MatrixParts parts;
        parts.numbers = shown;
        if (!isOne)
            parts = MatrixParts::split(before);
        parts.numbers[static_cast<std::size_t>(index)] = number;
        const SbMatrix made = MatrixParts::make(parts.numbers, index, before);
        if (!std::isfinite(number))
            problem = "A part must be finite";
        else if (!parts.problem.isEmpty())
            problem = "A matrix: " + parts.problem;
        else
            std::copy_n(made[0], kElements, present);
        return problem.isEmpty();
    });
    markRefusal(part(index), problem);
    if (problem.isEmpty())
        showValue();
}

MatrixParts::Numbers MatrixWidget::shownParts() const
{
    MatrixParts::Numbers shown;
    for (std::size_t i = 0; i < shown.size(); ++i)
        shown[i] = part(static_cast<int>(i))->number();
    return shown;
}

void MatrixWidget::showValue()
{
    rememberNumbers();
    if (!edit()->read([this](const SoField& value) { m_matrix = matrixOf(value); }))
        return;
    bool isInvertible = false;
    (void)m_matrix.inverse(&isInvertible);
    m_inverse->setEnabled(isInvertible && edit()->isEditable());
    m_inverse->setToolTip(isInvertible ? "Invert" : "There is no inverse: the determinant is 0");
    showElements();
    if (m_pages->checkedId() == Parts)
        showParts();
}

void MatrixWidget::showElements()
{
    for (int i = 0; i < kElements; ++i)
        element(i)->setNumber(m_matrix[i / 4][i % 4]);
}

void MatrixWidget::showParts()
{
    // Numbers that make the matrix stay as they were typed, a scale of 0 among them.
    const bool isShownAlready =
        m_stack->currentIndex() == Parts && sameMatrix(MatrixParts::make(shownParts()), m_matrix);
    if (isShownAlready)
        return;
    const MatrixParts parts = MatrixParts::split(m_matrix);
    m_stack->setCurrentIndex(parts.problem.isEmpty() ? Parts : Problem);
    m_problem->setText("The matrix has no such parts. " + parts.problem);
    for (std::size_t i = 0; i < parts.numbers.size() && parts.problem.isEmpty(); ++i)
        part(static_cast<int>(i))->setNumber(parts.numbers[i]);
}

} // namespace

MrbFieldWidget* makeMatrixWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent)
{
    const bool isOurs = edit->getFieldType() == SoSFMatrix::getClassTypeId();
    return isOurs && form == MrbFieldWidget::Form::Full ? new MatrixWidget(edit, parent) : nullptr;
}
