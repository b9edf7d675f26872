#pragma once

#include <QObject>
#include <QString>

class SoMiraboTreeView;

namespace mirabo {

/// Offers operations to a program that drives the window unattended (the standalone inspector's
/// screenshots); found as the child "automation" of the main window and called by name.
class Automation final : public QObject {
    Q_OBJECT

public:
    Automation(QObject* parent, SoMiraboTreeView* tree);

    /// The file shown; empty when none could be read.
    Q_INVOKABLE QString sceneFile() const;
    /// Makes the first row of a shape current; false when the scene has none.
    Q_INVOKABLE bool selectFirstShape();
    /// Draws what is pending; true when the viewer shows the scene as it is now.
    Q_INVOKABLE bool drawScene();

private:
    SoMiraboTreeView* m_tree; // Not owned; its dock's.
};

} // namespace mirabo
