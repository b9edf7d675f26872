#pragma once

#include "Burst.h"
#include "FieldNumbers.h"

#include <QWidget>

#include <functional>

class MarkedLineEdit;
class QLabel;
class QMouseEvent;

/// A one-line box for a number of any kind. Knows nothing of fields.
///
/// Takes numbers and expressions ("2*pi", "*= 1.5") as they are typed: each text that can be read
/// is told by edited(). Up, Down and the wheel step by the magnitude of the number (Shift ten
/// times, Ctrl a tenth as much), a drag on the grip or on the label changes it. What cannot be read
/// is marked (illegal, a frame, the tool tip) and stays until it is mended or Escape is pressed.
///
/// A typing, a run of steps or a drag is one gesture: begun() comes before its first edited(), and
/// ended() or cancelled() after its last.
class NumberBox final : public QWidget {
    Q_OBJECT
    Q_PROPERTY(bool illegal READ isIllegal)
    Q_PROPERTY(double number READ number WRITE setNumber)

public:
    explicit NumberBox(FieldNumbers::Kind kind, QWidget* parent = nullptr);

    FieldNumbers::Kind kind() const { return m_kind; }
    double number() const { return m_number; }
    /// Shows a number, silently. While isTyping() the text stays as it is; the number is shown when
    /// the user is done.
    void setNumber(double number);

    /// The name of the number, for screen readers and for the tool tip.
    void setName(const QString& name);
    /// Sets the lines of the tool tip below the name: unit, range, meaning.
    void setHint(const QString& hint);
    /// A drag on the label changes the number, too. The label is not owned.
    void setLabel(QLabel* label);
    /// Without the grip the box is the line of text alone, as for cells of a table. Shown by
    /// default.
    void setGripShown(bool on);
    /// The characters that there is room for; 9 by default.
    void setWidthInCharacters(int count);

    /// Read-only, the text can be selected and copied.
    void setReadOnly(bool on);
    bool isReadOnly() const;

    bool isHex() const { return m_isHex; }
    /// Shows a number of an unsigned kind in hexadecimal.
    void setHex(bool on);

    /// The text cannot be read as a number of the kind, or was refused.
    bool isIllegal() const;
    /// Returns the fault of the text and its position; empty for a legal text.
    const QString& problem() const;
    /// The user has typed and is not done.
    bool isTyping() const { return m_gesture == Gesture::Typing; }
    /// Says why the owner could not take the number told by edited(); marks the text, which stays.
    void refuse(const QString& why);
    /// Takes the mark of a refusal away; one of a text that cannot be read stays.
    void clearRefusal();
    /// Ends the gesture. A text that is illegal stays.
    void commit();

    /// Reads a text from the clipboard that is more than one number; false to have it pasted.
    void setPasteReader(std::function<bool(const QString& text)> reader);

    QString text() const;
    MarkedLineEdit* lineEdit() const { return m_edit; }

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void begun();
    void edited(double number);
    void ended();
    /// Escape; the number from before the gesture is shown again. Also when an illegal text is
    /// given up that was typed in an earlier gesture, or before any.
    void cancelled();
    /// Follows ended(), cancelled(), and the end of a typing that changed nothing.
    void settled();
    /// The user is done with the box: Return with a legal text, or Escape without a gesture.
    void finished();

private:
    enum class Gesture { None, Typing, Steps, Drag };

    void takeText();
    bool readText(double& number, QString& problem) const;
    void stepBy(double steps, bool isKey);
    void takeSteps(double steps);
    void drag(const QMouseEvent& event);
    void startDrag(const QMouseEvent& event);
    void enter(Gesture gesture);
    void change(double number);
    void endGesture();
    void cancel();
    void showNumber();
    void showExactly();
    QString roundedText() const;
    void updateHint();
    bool filterEdit(QEvent* event);
    bool filterHandle(QEvent* event);
    void showMenu(const QPoint& position);

    FieldNumbers::Kind m_kind;
    bool m_isHex = false;
    QString m_name;
    QString m_hint;
    double m_number = 0;

    Gesture m_gesture = Gesture::None;
    bool m_isTold = false; // begun() was sent
    bool m_isRefused = false;
    double m_before = 0; // the gesture
    double m_step = 0;   // of the gesture
    double m_base = 0;   // where the drag or the steps began, as shown
    double m_steps = 0;  // since then
    int m_dragX = 0;
    Burst m_burst;

    MarkedLineEdit* m_edit;
    QWidget* m_grip;
    QLabel* m_label = nullptr; // Not owned; null after its death.
};
