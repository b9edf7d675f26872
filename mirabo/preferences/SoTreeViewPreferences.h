#pragma once

#include "mirabo/preferences/SoStylePreferences.h"

#include <memory>

namespace Ui {
class QTreeViewPreferences;
}

/// Page of the preferences for the scene tree: the styles of its texts, the outline of the selected
/// object, and how references are counted.
class SoTreeViewPreferences final : public SoStylePreferences {
    Q_OBJECT

public:
    explicit SoTreeViewPreferences(QWidget* parent = nullptr);
    ~SoTreeViewPreferences() override;

private:
    void loadOptions() override;
    QVector<bool> options() const override;
    void saveOptions() override;
    void styleShown(const mirabo::TextStyle& style) override;

    std::unique_ptr<Ui::QTreeViewPreferences> m_form;
};
