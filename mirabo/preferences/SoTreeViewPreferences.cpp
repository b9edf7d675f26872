#include "mirabo/preferences/SoTreeViewPreferences.h"

#include "mirabo/preferences/Settings.h"
#include "ui_QTreeViewPreferences.h"

SoTreeViewPreferences::SoTreeViewPreferences(QWidget* parent)
    : SoStylePreferences(mirabo::kTreeGroup, mirabo::defaultTreeStyles(), parent),
      m_form(std::make_unique<Ui::QTreeViewPreferences>())
{
    m_form->setupUi(this);
    setUpStyles(mirabo::styleControlsOf(*m_form));
    connect(m_form->m_checkShow, &QCheckBox::toggled, this,
            [this](bool on) { edit([on](mirabo::TextStyle& style) { style.show = on; }); });
    load();
}

SoTreeViewPreferences::~SoTreeViewPreferences() = default;

void SoTreeViewPreferences::loadOptions()
{
    m_form->m_checkSelectedNode->setChecked(mirabo::readHighlightSelectedNode());
    m_form->m_checkBaseKit->setChecked(mirabo::readRealNodekitsCounter());
    m_form->m_checkVRML->setChecked(mirabo::readRealVrmlCounter());
}

QVector<bool> SoTreeViewPreferences::options() const
{
    return {m_form->m_checkSelectedNode->isChecked(), m_form->m_checkBaseKit->isChecked(),
            m_form->m_checkVRML->isChecked()};
}

void SoTreeViewPreferences::saveOptions()
{
    mirabo::writeHighlightSelectedNode(m_form->m_checkSelectedNode->isChecked());
    mirabo::writeRealNodekitsCounter(m_form->m_checkBaseKit->isChecked());
    mirabo::writeRealVrmlCounter(m_form->m_checkVRML->isChecked());
}

void SoTreeViewPreferences::styleShown(const mirabo::TextStyle& style)
{
    m_form->m_checkShow->setChecked(style.show);
}
