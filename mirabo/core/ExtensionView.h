#pragma once

#include <QDockWidget>

class QAction;

namespace mirabo {

/// The dock around an extension's view.
class ExtensionView final : public QDockWidget {
    Q_OBJECT

public:
    explicit ExtensionView(const QString& title, QWidget* parent);

    /// A checkable action of that name which shows and hides the view; the dock owns it.
    QAction* createToggleAction(const QString& text);

public Q_SLOTS:
    /// Shows (raised, where docks share a place) or hides the view.
    void s_viewChanged(bool shown);
};

} // namespace mirabo
