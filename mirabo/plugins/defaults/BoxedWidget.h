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
    /// The boxes can still be read and copied from; other controls that change the value are
    /// disabled.
    void setReadOnly(bool on) override;

protected:
    /// The numbers of a value.
    using Numbers = std::vector<double>;
    /// Changes the numbers of a field's value. `base` has those from before the gesture, which
    /// typing starts from again with every key. False gives the change up.
    using NumbersChange = std::function<bool(const Numbers& base, double* numbers)>;

    const FieldNumbers& numbers() const { return *m_numbers; }
    /// Those of a field; empty when they cannot be read.
    Numbers readNumbers(int field = 0) const;
    /// Changes the values of all fields; what it returns is that of MrbFieldEdit::change().
    bool change(const MrbFieldEdit::Change& change);
    bool changeNumbers(const NumbersChange& change);
    /// The fields that change() changes, in its order.
    std::vector<int> editableFields() const;
    /// Remembers the fields' numbers as those shown; isTyping() compares with them.
    void rememberNumbers();

    /// Those of the edit; in between changeNumbers() knows the numbers from before.
    void beginGesture();
    void endGesture();
    void cancelGesture();

    /// Has a box begin and end gestures of the edit; what it tells by edited() is up to the caller.
    void adopt(NumberBox* box);
    /// Names a control that changes the value.
    void addControl(QWidget* control) { m_controls.push_back(control); }
    /// Reads several numbers from the clipboard, pasted into the box, as the whole value.
    void acceptLists(NumberBox* box);
    const std::vector<NumberBox*>& boxes() const { return m_boxes; }
    /// Returns the numbers in the boxes.
    Numbers shownNumbers() const;
    /// Marks a box whose number could not be taken, or takes the marks off all of them when `why`
    /// is empty and the fields could be changed.
    void markRefusal(NumberBox* box, const QString& why);
    void clearRefusals();

private:
    void rememberBases();
    bool pasteList(const QString& text);

    const FieldNumbers* m_numbers;
    std::vector<NumberBox*> m_boxes;  // Not owned; children.
    std::vector<QWidget*> m_controls; // Not owned; children.
    Numbers m_remembered;
    std::vector<Numbers> m_bases; // of the editable fields, when the gesture began
    bool m_isInGesture = false;
};

/// Reads numbers and expressions with spaces, commas, semicolons or brackets around them. Empty
/// when one of them is none.
std::vector<double> readNumberList(const QString& text);
/// Equal bit by bit.
bool sameNumbers(const std::vector<double>& a, const std::vector<double>& b);
