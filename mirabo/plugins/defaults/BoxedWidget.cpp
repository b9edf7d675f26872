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
    int field = 0;
    return this->change([&](SoField& value) {
        double numbers[FieldNumbers::kMaxCount];
        m_numbers->get(value, 0, numbers);
        return change(field++, numbers) && m_numbers->setAll(value, 0, numbers);
    });
}

void BoxedWidget::rememberNumbers()
{
    m_remembered = readNumbers();
}

void BoxedWidget::adopt(NumberBox* box)
{
    m_boxes.push_back(box);
    connect(box, &NumberBox::begun, this, [this] {
        gestureBegins();
        edit()->beginGesture();
    });
    connect(box, &NumberBox::ended, this, [this] { edit()->endGesture(); });
    connect(box, &NumberBox::cancelled, this, [this] {
        edit()->cancelGesture();
        clearRefusals();
        showValue();
    });
    connect(box, &NumberBox::settled, this, &BoxedWidget::typingEnded);
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

void BoxedWidget::clearRefusals()
{
    for (NumberBox* box : m_boxes)
        box->refuse({});
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
