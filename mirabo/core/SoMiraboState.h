#pragma once

#include <QObject>

class QContextMenuEvent;

/// Meaning of some actions of the main window while the user works in one of the panels: connects
/// them when entered, disconnects them when left, and builds the panel's context menu.
///
/// A state that dies leaves SoMiraboStateManager.
class SoMiraboState : public QObject {
    Q_OBJECT

public:
    explicit SoMiraboState(QObject* parent = nullptr) : QObject(parent) {}
    ~SoMiraboState() override;

    virtual void enter() = 0;
    virtual void leave() = 0;
    /// The event's position is the panel's own.
    virtual void contextMenu(QContextMenuEvent* event) = 0;
};
