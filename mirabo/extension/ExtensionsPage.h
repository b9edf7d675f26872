#pragma once

#include "mirabo/extender/MrbPluginsManager.h"

#include <QWidget>

class QComboBox;
class QLabel;
class QTreeWidget;
class QTreeWidgetItem;

namespace mirabo {

/// A page of the preferences: what the configuration has loaded, what runs of it, why something
/// does not, and which profile is in force.
class ExtensionsPage final : public QWidget {
    Q_OBJECT

public:
    explicit ExtensionsPage(QWidget* parent);

    void load();
    /// Puts the chosen profile in force, until the tool ends.
    void save();
    /// The page as the dialog takes it.
    MrbPluginsManager::PreferencePage asPage();

private:
    void fillProfiles();
    void fillRows();
    void addProblems();
    void showCause(const QTreeWidgetItem* row);
    QTreeWidgetItem* makeRow(const MrbPluginsManager::ExtensionState& state) const;

    QLabel* m_source;
    QComboBox* m_profiles;
    QTreeWidget* m_rows;
    QLabel* m_cause;
};

} // namespace mirabo
