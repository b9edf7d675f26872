#pragma once

#include "FieldNumbers.h"

#include <QWidget>

class NumberGrip;
class QLabel;
class QLineEdit;

/// A one-line box for a number of any kind. Knows nothing of fields.
///
/// Takes numbers and expressions ("2*pi", "*= 1.5") as they are typed: each text that can be read
/// is told by edited(). Up, Down and the wheel step by the magnitude of the number (Shift ten
/// times, Ctrl a tenth as much), a drag on the grip or on the label changes it. What cannot be read
/// is marked (the property "illegal", a frame, a tool tip) and stays until it is mended or Escape
/// is pressed.
///
/// A typing, a run of steps or a drag is one gesture: begun() comes before its first edited(), and
/// ended() or cancelled() after its last.
class NumberBox final : public QWidget {
    Q_OBJECT
    Q_PROPERTY(bool illegal READ isIllegal)

public:
    explicit NumberBox(FieldNumbers::Kind kind, QWidget* parent = nullptr);
    ~NumberBox() override;

    FieldNumbers::Kind kind() const { return m_kind; }
    double number() const { return m_number; }
    /// Shows a number, silently. While isTyping() the text stays as it is; the number is shown when
    /// the user is done.
    void setNumber(double number);

    /// The name of the number, for screen readers and for its tool tip.
    void setName(const QString& name);
    /// What the tool tip says below the name: unit, range, meaning.
    void setHint(const QString& hint);
    /// A drag on the label changes the number, too. The label is not owned.
    void setLabel(QLabel* label);
    /// The box alone, for cells of a table.
    void setGripShown(bool on);
    /// Numbers outside are refused; by default the limits of the kind.
    void setRange(double lowest, double highest);
    bool isHex() const { return m_isHex; }
    /// Shows a number of an unsigned kind in hexadecimal.
    void setHex(bool on);

    /// The text cannot be read as a number of the kind.
    bool isIllegal() const { return !m_problem.isEmpty(); }
    /// What is wrong with the text, and where; empty when nothing is.
    const QString& problem() const { return m_problem; }
    /// The text was changed by the user and the gesture is not over.
    bool isTyping() const { return m_isTyping; }
    /// Why the owner could not take the number; marks the text like a problem of its own.
    void refuse(const QString& why);
    /// Ends a gesture. An illegal text stays.
    void commit();

    QLineEdit* lineEdit() const { return m_edit; }

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void begun();
    void edited(double number);
    void ended();
    /// Escape: the number from before the gesture is shown again.
    void cancelled();
    /// The user is done with the box: Return, or Escape without a gesture.
    void finished();

private:
    friend class NumberGrip;
    enum class Gesture { None, Typing, Steps, Drag };

    FieldNumbers::Kind m_kind;
    double m_number = 0;
    bool m_isHex = false;
    bool m_isTyping = false;
    QString m_problem;
    QLineEdit* m_edit;
};
