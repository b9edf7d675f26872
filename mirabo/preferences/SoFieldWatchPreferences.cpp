#include "mirabo/preferences/SoFieldWatchPreferences.h"

#include "mirabo/preferences/Settings.h"
#include "ui_QFieldWatchPreferences.h"

SoFieldWatchPreferences::SoFieldWatchPreferences(QWidget* parent)
    : SoStylePreferences(mirabo::kFieldWatchGroup, mirabo::defaultFieldStyles(), parent),
      m_form(std::make_unique<Ui::QFieldWatchPreferences>())
{
    m_form->setupUi(this);
    setUpStyles(mirabo::styleControlsOf(*m_form));
    load();
}

SoFieldWatchPreferences::~SoFieldWatchPreferences() = default;
