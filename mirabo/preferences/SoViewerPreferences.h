#pragma once

#include "mirabo/extender/MrbPluginsManager.h"

#include <QColor>
#include <QWidget>

#include <memory>

class QAbstractButton;

namespace Ui {
class QViewerPreferences;
}

namespace mirabo {
class ViewerLook;
}

/// Page of the preferences for the viewer: transparency type and background colour. It sets only
/// what the user has changed, so that a type or a colour that the page cannot show stays.
class SoViewerPreferences final : public QWidget {
    Q_OBJECT

public:
    /// The page owns the look.
    explicit SoViewerPreferences(std::unique_ptr<mirabo::ViewerLook> look,
                                 QWidget* parent = nullptr);
    ~SoViewerPreferences() override;

    /// The page as the dialog takes it.
    MrbPluginsManager::PreferencePage asPage(const QString& name);

public Q_SLOTS:
    /// Shows what the viewer has. A type that no button stands for checks none.
    void init();
    void reInit() { init(); }
    void save();
    void transparencyButtonClicked(QAbstractButton* button);
    /// Lets the user choose the background.
    void colorClicked();
    /// Paints the chosen background on the button.
    void setColorPixmap();

protected:
    void changeEvent(QEvent* event) override;

private:
    void checkButton(int type);

    std::unique_ptr<Ui::QViewerPreferences> m_form;
    std::unique_ptr<mirabo::ViewerLook> m_look;
    int m_type = 0;
    QColor m_background;
    bool m_typeChosen = false;       ///< since the last init() or save()
    bool m_backgroundChosen = false; ///< likewise
};
