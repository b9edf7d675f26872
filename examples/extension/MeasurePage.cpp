#include "MeasurePage.h"

#include <QColorDialog>
#include <QFormLayout>
#include <QPixmap>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>

namespace {

constexpr int kMaxDigits = 6;
constexpr int kDefaultDigits = 3;
constexpr char kDefaultColor[] = "#e0803c";
constexpr char kDigitsKey[] = "digits";
constexpr char kColorKey[] = "color";

// A store of its own: the tool's settings are the tool's.
QSettings store()
{
    return QSettings("Mirabo", "MeasureExtension");
}

} // namespace

MeasurePage::MeasurePage(QWidget* parent)
    : MrbPreferencePage(parent), m_digits(new QSpinBox(this)), m_button(new QPushButton(this))
{
    m_digits->setRange(0, kMaxDigits);
    auto* form = new QFormLayout(this);
    form->addRow("&Digits:", m_digits);
    form->addRow("&Tint:", m_button);
    connect(m_button, &QPushButton::clicked, this, &MeasurePage::chooseColor);
}

int MeasurePage::digits()
{
    return qBound(0, store().value(kDigitsKey, kDefaultDigits).toInt(), kMaxDigits);
}

QColor MeasurePage::preferredColor()
{
    return {store().value(kColorKey, kDefaultColor).toString()};
}

void MeasurePage::load()
{
    m_digits->setValue(digits());
    m_color = preferredColor();
    showColor();
}

void MeasurePage::save()
{
    QSettings settings = store();
    settings.setValue(kDigitsKey, m_digits->value());
    settings.setValue(kColorKey, m_color.name());
    settings.sync();
    Q_EMIT saved();
}

void MeasurePage::chooseColor()
{
    // Without a loop of its own: the host may end the inspector while the dialog is open.
    auto* dialog = new QColorDialog(m_color, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QColorDialog::colorSelected, this, [this](const QColor& chosen) {
        m_color = chosen;
        showColor();
    });
    dialog->open();
}

void MeasurePage::showColor()
{
    QPixmap swatch(m_button->iconSize());
    swatch.fill(m_color);
    m_button->setIcon(swatch);
    m_button->setText(m_color.name());
}
