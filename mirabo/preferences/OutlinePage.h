#pragma once

#include "mirabo/extender/MrbPluginsManager.h"

#include <QColor>
#include <QWidget>

#include <utility>

class QPushButton;
class QSpinBox;

namespace mirabo {

/// A page of the preferences: colour and width of the outline around the selected object.
class OutlinePage final : public QWidget {
    Q_OBJECT

public:
    /// `saved` puts what was stored in force.
    OutlinePage(std::function<void()> saved, QWidget* parent);

    void load();
    void save();
    /// The page as the dialog takes it.
    MrbPluginsManager::PreferencePage asPage();

private:
    class Preview;
    void chooseColor();
    void showChoice();

    const std::function<void()> m_saved;
    QColor m_color;
    std::pair<QColor, int> m_loaded; ///< or saved last
    QPushButton* m_button;
    QSpinBox* m_width;
    Preview* m_preview;
};

} // namespace mirabo
