#pragma once

#include "mirabo/extender/MrbPluginsManager.h"

#include <QWidget>

#include <tuple>

class QCheckBox;
class QLabel;
class QLineEdit;

namespace mirabo {

/// A page of the preferences: where the reference pages are, and what a start restores.
class GeneralPage final : public QWidget {
    Q_OBJECT

public:
    /// In a host there is no last file to restore.
    GeneralPage(bool standalone, QWidget* parent);

    void load();
    void save();
    /// The page as the dialog takes it.
    MrbPluginsManager::PreferencePage asPage();

private:
    using Choices = std::tuple<QString, bool, bool, bool>;

    void checkAddress();
    Choices choices() const;

    QLineEdit* m_address;
    QLabel* m_problem;
    QCheckBox* m_window;
    QCheckBox* m_bookmarks;
    QCheckBox* m_file;
    Choices m_loaded; ///< or saved last
};

} // namespace mirabo
