#pragma once

#include "FieldNumbers.h"
#include "mirabo/extender/MrbFieldEditor.h"

#include <vector>

class NumberBox;

/// The base of the widgets for values made of numbers: their boxes, gestures and typing.
class BoxedWidget : public MrbFieldWidget {
    Q_OBJECT

public:
    /// The fields' type has numbers.
    BoxedWidget(MrbFieldEdit* edit, QWidget* parent);

    /// True for a text that is illegal, and for one that the fields no longer agree with.
    bool isTyping() const override;
    void commit() override;

protected:
    /// The numbers of a value.
    using Numbers = std::vector<double>;
    /// Changes the numbers of a field's value; `field` is the number of the field. False gives the
    /// change up.
    using NumbersChange = std::function<bool(int field, double* numbers)>;

    const FieldNumbers& numbers() const { return *m_numbers; }
    /// Those of a field; empty when they cannot be read.
    Numbers readNumbers(int field = 0) const;
    /// Changes the values of all fields.
    bool change(const MrbFieldEdit::Change& change);
    bool changeNumbers(const NumbersChange& change);
    /// What the fields hold is shown: isTyping() compares with it.
    void rememberNumbers();

    /// Has a box begin and end gestures of the edit; what it tells by edited() is up to the caller.
    void adopt(NumberBox* box);
    /// Reads several numbers from the clipboard, pasted into the box, as the whole value.
    void acceptLists(NumberBox* box);
    const std::vector<NumberBox*>& boxes() const { return m_boxes; }
    /// Takes the marks off the boxes whose numbers had been refused.
    void clearRefusals();
    /// Called before the first change of a gesture of a box.
    virtual void gestureBegins() {}

private:
    bool pasteList(const QString& text);

    const FieldNumbers* m_numbers;
    std::vector<NumberBox*> m_boxes; // Not owned; children.
    Numbers m_remembered;
};

/// Reads numbers and expressions with spaces, commas, semicolons or brackets around them. Empty
/// when one of them is none.
std::vector<double> readNumberList(const QString& text);
/// Equal bit by bit.
bool sameNumbers(const std::vector<double>& a, const std::vector<double>& b);
