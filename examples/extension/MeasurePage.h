#pragma once

#include <mirabo/extender/MrbPreferencePage.h>

#include <QColor>

class QPushButton;
class QSpinBox;

/// The preferences of the example: digits of the measurements, color of the tint.
class MeasurePage final : public MrbPreferencePage {
    Q_OBJECT

public:
    explicit MeasurePage(QWidget* parent = nullptr);

    void load() override;
    void save() override;

    /// The values in force.
    static int digits();
    static QColor preferredColor();

Q_SIGNALS:
    void saved();

private:
    void chooseColor();
    void showColor();

    QSpinBox* m_digits;
    QPushButton* m_button;
    QColor m_color;
};
