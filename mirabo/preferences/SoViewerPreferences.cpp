#include "mirabo/preferences/SoViewerPreferences.h"

#include "mirabo/preferences/ColorChoice.h"
#include "mirabo/preferences/PreferencePage.h"
#include "mirabo/preferences/ViewerLook.h"
#include "ui_QViewerPreferences.h"

#include <QEvent>
#include <QSignalBlocker>

#include <utility>

SoViewerPreferences::SoViewerPreferences(std::unique_ptr<mirabo::ViewerLook> look, QWidget* parent)
    : QWidget(parent), m_form(std::make_unique<Ui::QViewerPreferences>()), m_look(std::move(look))
{
    m_form->setupUi(this);
    // The numbers are those of SoGLRenderAction::TransparencyType.
    const std::pair<QRadioButton*, int> types[] = {
        {m_form->m_screenDoor, 0},       {m_form->m_blended, 3},
        {m_form->m_delayedBlended, 4},   {m_form->m_sortedBlended, 6},
        {m_form->m_sortedPixels, 7},     {m_form->m_delayedSortedPixels, 8},
        {m_form->m_sortedTriangles, 10}, {m_form->m_sortedObjectTriangles, 12},
        {m_form->m_noTransparency, 13}};
    for (const auto& [button, type] : types)
        m_form->m_transparencyGroup->setId(button, type);
    connect(m_form->m_transparencyGroup,
            QOverload<QAbstractButton*, bool>::of(&QButtonGroup::buttonToggled), this,
            [this](QAbstractButton* button, bool on) {
                if (on)
                    transparencyButtonClicked(button);
            });
    connect(m_form->m_backgroundButton, &QPushButton::clicked, this,
            &SoViewerPreferences::colorClicked);
    init();
}

SoViewerPreferences::~SoViewerPreferences() = default;

MrbPluginsManager::PreferencePage SoViewerPreferences::asPage(const QString& name)
{
    return mirabo::preferencePage(name, this, &SoViewerPreferences::reInit,
                                  &SoViewerPreferences::save);
}

void SoViewerPreferences::init()
{
    checkButton(m_look->getTransparencyType());
    m_background = m_look->getBackground();
    m_backgroundChosen = false;
    setColorPixmap();
}

void SoViewerPreferences::checkButton(int type)
{
    QButtonGroup* group = m_form->m_transparencyGroup;
    const QSignalBlocker silent(group);
    group->setExclusive(false); // else none could be checked
    for (QAbstractButton* button : group->buttons())
        button->setChecked(group->id(button) == type);
    group->setExclusive(true);
    m_type = type;
    m_typeChosen = false;
}

void SoViewerPreferences::transparencyButtonClicked(QAbstractButton* button)
{
    m_type = m_form->m_transparencyGroup->id(button);
    m_typeChosen = true;
}

void SoViewerPreferences::save()
{
    if (std::exchange(m_typeChosen, false))
        m_look->setTransparencyType(m_type);
    if (std::exchange(m_backgroundChosen, false))
        m_look->setBackground(m_background);
}

void SoViewerPreferences::colorClicked()
{
    mirabo::chooseColor(this, m_background, [this](const QColor& color) {
        m_background = color;
        m_backgroundChosen = true;
        setColorPixmap();
    });
}

void SoViewerPreferences::setColorPixmap()
{
    m_form->m_backgroundButton->setIcon(mirabo::swatchIcon(m_background, *this));
}

void SoViewerPreferences::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        setColorPixmap();
}
