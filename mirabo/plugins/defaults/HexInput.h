#pragma once

#include <QObject>

class MarkedLineEdit;
class QWidget;

/// The text of a colour as it is typed. Knows nothing of fields; a typing is one gesture, as of
/// NumberBox.
class HexInput final : public QObject {
    Q_OBJECT

public:
    /// The line of text is a child of `parent`, too.
    explicit HexInput(QWidget* parent);

    MarkedLineEdit* lineEdit() const { return m_edit; }
    /// Shows a text, silently; not while the user is typing.
    void showText(const QString& text);
    /// Ends the gesture. An illegal text stays.
    void commit();
    /// Marks the text; an empty problem takes the mark away.
    void setProblem(const QString& problem);
    bool isIllegal() const;
    bool isTyping() const { return m_isTyping; }

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    /// Before the first edited().
    void begun();
    void edited(const QString& text);
    void ended();
    void cancelled();
    /// Follows ended() and cancelled().
    void settled();
    /// Return with a legal text, or Escape without a gesture.
    void finished();

private:
    void take(const QString& text);
    void cancel();

    MarkedLineEdit* m_edit;
    bool m_isTyping = false;
    bool m_isInGesture = false;
};
