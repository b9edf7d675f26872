#include "BoxedWidget.h"

#include "Expression.h"
#include "NumberBox.h"

#include <kalmyr/core/SoField.h>

#include <QRegularExpression>

#include <algorithm>
#include <cstring>

BoxedWidget::BoxedWidget(MrbFieldEdit* edit, QWidget* parent)
    : MrbFieldWidget(edit, parent), m_numbers(FieldNumbers::of(edit->getFieldType()))
{
}

bool BoxedWidget::isTyping() const
{
    const bool isIllegal = std::any_of(m_boxes.begin(), m_boxes.end(),
                                       [](const NumberBox* box) { return box->isIllegal(); });
    const bool isBusy = std::any_of(m_boxes.begin(), m_boxes.end(),
                                    [](const NumberBox* box) { return box->isTyping(); });
    return isIllegal || (isBusy && !sameNumbers(readNumbers(), m_remembered));
}

void BoxedWidget::commit()
{
    for (NumberBox* box : m_boxes)
        box->commit();
}

void BoxedWidget::setReadOnly(bool on)
{
    for (NumberBox* box : m_boxes)
        box->setReadOnly(on);
    for (QWidget* control : m_controls)
        control->setEnabled(!on);
}

BoxedWidget::Numbers BoxedWidget::readNumbers(int field) const
{
    Numbers numbers(static_cast<std::size_t>(m_numbers->count()));
    const bool isRead = edit()->read(
        [this, &numbers](const SoField& value) { m_numbers->get(value, 0, numbers.data()); },
        field);
    return isRead ? numbers : Numbers();
}

bool BoxedWidget::change(const MrbFieldEdit::Change& change)
{
    const bool isChanged = edit()->change(change);
    rememberNumbers();
    return isChanged;
}

bool BoxedWidget::changeNumbers(const NumbersChange& change)
{
    // A field that died or was connected meanwhile has none any more.
    if (!m_isInGesture || editableFields().size() != m_bases.size())
        rememberBases();
    std::size_t call = 0;
    return this->change([&](SoField& value) {
        if (call >= m_bases.size())
            return false;
        double numbers[FieldNumbers::kMaxCount];
        m_numbers->get(value, 0, numbers);
        return change(m_bases[call++], numbers) && m_numbers->setAll(value, 0, numbers);
    });
}

std::vector<int> BoxedWidget::editableFields() const
{
    std::vector<int> fields;
    for (int i = 0; i < edit()->getFieldCount(); ++i) {
        const MrbFieldState state = edit()->getState(i);
        if (state.isAlive && !state.isReadOnly)
            fields.push_back(i);
    }
    return fields;
}

void BoxedWidget::rememberBases()
{
    m_bases.clear();
    for (const int field : editableFields())
        m_bases.push_back(readNumbers(field));
}

void BoxedWidget::rememberNumbers()
{
    m_remembered = readNumbers();
}

void BoxedWidget::beginGesture()
{
    rememberBases();
    m_isInGesture = true;
    edit()->beginGesture();
}

void BoxedWidget::endGesture()
{
    m_isInGesture = false;
    edit()->endGesture();
}

void BoxedWidget::cancelGesture()
{
    m_isInGesture = false;
    edit()->cancelGesture();
}

void BoxedWidget::adopt(NumberBox* box)
{
    m_boxes.push_back(box);
    connect(box, &NumberBox::begun, this, &BoxedWidget::beginGesture);
    connect(box, &NumberBox::ended, this, &BoxedWidget::endGesture);
    connect(box, &NumberBox::cancelled, this, [this] {
        cancelGesture();
        clearRefusals();
        showValue();
    });
    connect(box, &NumberBox::settled, this, [this] {
        if (!isTyping())
            typingEnded();
    });
    connect(box, &NumberBox::finished, this, &BoxedWidget::finished);
}

void BoxedWidget::acceptLists(NumberBox* box)
{
    box->setPasteReader([this](const QString& text) { return pasteList(text); });
}

bool BoxedWidget::pasteList(const QString& text)
{
    const std::vector<double> pasted = readNumberList(text);
    if (pasted.size() != static_cast<std::size_t>(m_numbers->count()))
        return false;
    commit();
    clearRefusals();
    change([this, &pasted](SoField& value) { return m_numbers->setAll(value, 0, pasted.data()); });
    showValue();
    return true;
}

BoxedWidget::Numbers BoxedWidget::shownNumbers() const
{
    Numbers shown;
    for (const NumberBox* box : m_boxes)
        shown.push_back(box->number());
    return shown;
}

void BoxedWidget::markRefusal(NumberBox* box, const QString& why)
{
    const QString problem = why.isEmpty() ? edit()->getProblem() : why;
    if (problem.isEmpty())
        clearRefusals();
    else
        box->refuse(problem);
}

void BoxedWidget::clearRefusals()
{
    for (NumberBox* box : m_boxes)
        box->clearRefusal();
}

std::vector<double> readNumberList(const QString& text)
{
    std::vector<double> numbers;
    static const QRegularExpression s_separators("[\\s,;\\[\\]]+");
    for (const QString& word : text.split(s_separators, Qt::SkipEmptyParts)) {
        const Expression read = Expression::evaluate(word);
        if (!read.isValid)
            return {};
        numbers.push_back(read.number);
    }
    return numbers;
}

bool sameNumbers(const std::vector<double>& a, const std::vector<double>& b)
{
    return a.size() == b.size()
           && (a.empty() || !std::memcmp(a.data(), b.data(), a.size() * sizeof(double)));
}
