#include "EditorPage.h"

#include "EditorSettings.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QSpinBox>

EditorPage::EditorPage(QWidget* parent)
    : MrbPreferencePage(parent), m_digits(new QSpinBox(this)), m_unit(new QComboBox(this))
{
    m_digits->setObjectName("editorDigits");
    m_digits->setRange(0, settings::kMaxDigits);
    m_digits->setSpecialValueText(tr("All"));
    m_unit->setObjectName("editorAngleUnit");
    m_unit->addItems({tr("Degrees"), tr("Radians")});
    auto* note =
        new QLabel(tr("A number that is being edited is shown with all its digits."), this);
    note->setWordWrap(true);
    auto* layout = new QFormLayout(this);
    layout->addRow(tr("Significant &digits:"), m_digits);
    layout->addRow(tr("&Angles in:"), m_unit);
    layout->addRow(note);
}

void EditorPage::load()
{
    m_digits->setValue(settings::digits());
    m_unit->setCurrentIndex(settings::anglesInDegrees() ? 0 : 1);
}

void EditorPage::save()
{
    settings::setDigits(m_digits->value());
    settings::setAnglesInDegrees(m_unit->currentIndex() == 0);
    Q_EMIT saved();
}
