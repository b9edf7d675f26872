#pragma once

#include <mirabo/extender/MrbPreferencePage.h>

class QComboBox;
class QSpinBox;

/// The page "Field Editor" of the preferences: digits and units.
class EditorPage final : public MrbPreferencePage {
    Q_OBJECT

public:
    explicit EditorPage(QWidget* parent);

    void load() override;
    void save() override;

Q_SIGNALS:
    void saved();

private:
    QSpinBox* m_digits;
    QComboBox* m_unit;
};
