#pragma once

#include <QColor>
#include <QObject>

/// Takes the colour below the mouse from the application's windows, as long as it lives: the next
/// click picks, Escape or another button gives up. Meanwhile no window gets the mouse.
///
/// Grabs nothing: other applications are not concerned.
class Eyedropper final : public QObject {
    Q_OBJECT

public:
    explicit Eyedropper(QObject* parent = nullptr);
    ~Eyedropper() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

    /// The colour that a widget of ours, or else the screen, shows there. Invalid where nothing can
    /// be seen.
    static QColor colorAt(const QPoint& globalPosition);

Q_SIGNALS:
    /// The mouse is over the colour.
    void hovered(const QColor& color);
    /// Each comes once, and last.
    void picked(const QColor& color);
    void givenUp();

private:
    void finish(const QColor& color);

    bool m_isFinished = false; // waits for the release of the button
};
