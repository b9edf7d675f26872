#include "mirabo/preferences/SoNodeOverviewPreferences.h"

#include "mirabo/preferences/Settings.h"
#include "ui_QNodeOverviewPreferences.h"

SoNodeOverviewPreferences::SoNodeOverviewPreferences(QWidget* parent)
    : SoStylePreferences(mirabo::kNodeOverviewGroup, mirabo::defaultFieldStyles(), parent),
      m_form(std::make_unique<Ui::QNodeOverviewPreferences>())
{
    m_form->setupUi(this);
    setUpStyles(mirabo::styleControlsOf(*m_form));
    connect(m_form->m_checkPart, &QCheckBox::toggled, this,
            &SoNodeOverviewPreferences::showPartChanged);
    load();
}

SoNodeOverviewPreferences::~SoNodeOverviewPreferences() = default;

void SoNodeOverviewPreferences::showPartChanged(bool on)
{
    m_showParts = on;
    m_form->m_checkPart->setChecked(on);
}

void SoNodeOverviewPreferences::loadOptions()
{
    showPartChanged(mirabo::readShowCatalogPart());
}

QVector<bool> SoNodeOverviewPreferences::options() const
{
    return {m_showParts};
}

void SoNodeOverviewPreferences::saveOptions()
{
    mirabo::writeShowCatalogPart(m_showParts);
}
