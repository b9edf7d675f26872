#pragma once

#include "mirabo/preferences/SoStylePreferences.h"

#include <memory>

namespace Ui {
class QNodeOverviewPreferences;
}

/// Page of the preferences for the field lists of the node overview.
class SoNodeOverviewPreferences final : public SoStylePreferences {
    Q_OBJECT

public:
    explicit SoNodeOverviewPreferences(QWidget* parent = nullptr);
    ~SoNodeOverviewPreferences() override;

public Q_SLOTS:
    /// Whether the public parts of node kits are to be listed.
    void showPartChanged(bool on);

private:
    void loadOptions() override;
    QVector<bool> options() const override;
    void saveOptions() override;

    std::unique_ptr<Ui::QNodeOverviewPreferences> m_form;
    bool m_showParts = false;
};
