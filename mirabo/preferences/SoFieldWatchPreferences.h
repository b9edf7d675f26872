#pragma once

#include "mirabo/preferences/SoStylePreferences.h"

#include <memory>

namespace Ui {
class QFieldWatchPreferences;
}

/// Page of the preferences for the field watch.
class SoFieldWatchPreferences final : public SoStylePreferences {
    Q_OBJECT

public:
    explicit SoFieldWatchPreferences(QWidget* parent = nullptr);
    ~SoFieldWatchPreferences() override;

private:
    void loadOptions() override {}
    void saveOptions() override {}

    std::unique_ptr<Ui::QFieldWatchPreferences> m_form;
};
