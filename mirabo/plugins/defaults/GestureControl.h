#pragma once

#include "Burst.h"

#include <QWidget>

/// Base of controls that are drawn here and moved by mouse and keys. Knows nothing of fields.
///
/// A drag or a run of keys is one gesture, as of NumberBox: begun() comes before its first change,
/// ended() or cancelled() after its last.
class GestureControl : public QWidget {
    Q_OBJECT

public:
    explicit GestureControl(QWidget* parent) : QWidget(parent) {}

    /// Ends the gesture.
    void commit();

Q_SIGNALS:
    void begun();
    void ended();
    void cancelled();
    /// Escape without a gesture.
    void finished();

protected:
    /// Opens the gesture if none is open.
    void enterGesture();
    /// Takes back the gesture, or tells that the user is done.
    void cancel();
    /// Counts a step of keys or the wheel; true when it begins a gesture of its own.
    bool beginsRun();
    void setDragged(bool on) { m_isDragged = on; }
    bool isDragged() const { return m_isDragged; }

    bool event(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    bool m_isInGesture = false;
    bool m_isDragged = false;
    Burst m_burst;
};
