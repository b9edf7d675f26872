#include "ViewerSettings.h"

#include <kalmyr/gui/SoGuiExaminerViewer.h>
#include <kalmyr/qt/SoQtViewer.h>

#include <QAction>
#include <QActionGroup>
#include <QCoreApplication>
#include <QMenu>

namespace {

QString translated(const char* text)
{
    return QCoreApplication::translate("SoQtViewer", text);
}

SoGuiViewer& gui(const SoQtViewer& viewer)
{
    return *viewer.getGuiViewer();
}

SoGuiExaminerViewer& examiner(const SoQtViewer& viewer)
{
    return static_cast<SoGuiExaminerViewer&>(gui(viewer));
}

} // namespace

std::vector<ViewerSettings::Setting> ViewerSettings::settingsOf(const SoQtViewer& viewer)
{
    using Action = SoGLRenderAction;
    using Examiner = SoGuiExaminerViewer;
    std::vector<Setting> all = {
        {QT_TRANSLATE_NOOP("SoQtViewer", "&Draw style"),
         {{"viewerAsIs", QT_TRANSLATE_NOOP("SoQtViewer", "&As is"), Action::AS_IS},
          {"viewerNoTexture", QT_TRANSLATE_NOOP("SoQtViewer", "No &texture"), Action::NO_TEXTURE},
          {"viewerFlat", QT_TRANSLATE_NOOP("SoQtViewer", "&Flat"), Action::FLAT},
          {"viewerHiddenLine", QT_TRANSLATE_NOOP("SoQtViewer", "&Hidden line"),
           Action::HIDDEN_LINE},
          {"viewerWireframe", QT_TRANSLATE_NOOP("SoQtViewer", "&Wireframe"), Action::WIREFRAME},
          {"viewerPoints", QT_TRANSLATE_NOOP("SoQtViewer", "&Points"), Action::POINTS},
          {"viewerBoundingBox", QT_TRANSLATE_NOOP("SoQtViewer", "&Bounding box"),
           Action::BOUNDING_BOX}},
         [](SoQtViewer& v) { return int(gui(v).getDrawStyle()); },
         [](SoQtViewer& v, int value) { gui(v).setDrawStyle(Action::DrawStyle(value)); },
         {}},
        {QT_TRANSLATE_NOOP("SoQtViewer", "&Mouse and keys"),
         {{"viewerStandardScheme", QT_TRANSLATE_NOOP("SoQtViewer", "&Standard"),
           SoGuiViewer::STANDARD},
          {"viewerModellingScheme", QT_TRANSLATE_NOOP("SoQtViewer", "As in &modelling programs"),
           SoGuiViewer::MODELLING}},
         [](SoQtViewer& v) { return int(gui(v).getNavigationScheme()); },
         [](SoQtViewer& v, int value) { gui(v).setNavigationScheme(SoGuiViewer::Scheme(value)); },
         {}},
        {QT_TRANSLATE_NOOP("SoQtViewer", "&Smooth edges"),
         {{"viewerSamples1", QT_TRANSLATE_NOOP("SoQtViewer", "&Off"), 1},
          {"viewerSamples2", QT_TRANSLATE_NOOP("SoQtViewer", "&2 samples"), 2},
          {"viewerSamples4", QT_TRANSLATE_NOOP("SoQtViewer", "&4 samples"), 4},
          {"viewerSamples8", QT_TRANSLATE_NOOP("SoQtViewer", "&8 samples"), 8}},
         [](SoQtViewer& v) { return v.getNumSamples(); },
         [](SoQtViewer& v, int value) { v.setNumSamples(value); },
         {}},
        {QT_TRANSLATE_NOOP("SoQtViewer", "&Clipping planes"),
         {{"viewerAutoClipping", QT_TRANSLATE_NOOP("SoQtViewer", "&Around what is seen"), 1},
          {"viewerFixedClipping", QT_TRANSLATE_NOOP("SoQtViewer", "As the &camera has them"), 0}},
         [](SoQtViewer& v) { return int(gui(v).isAutoClipping()); },
         [](SoQtViewer& v, int value) { gui(v).setAutoClipping(value != 0); },
         {}},
        {QT_TRANSLATE_NOOP("SoQtViewer", "St&ereo"),
         {{"viewerMono", QT_TRANSLATE_NOOP("SoQtViewer", "&Off"), 0},
          {"viewerAnaglyph", QT_TRANSLATE_NOOP("SoQtViewer", "&Red and cyan glasses"), 1}},
         [](SoQtViewer& v) { return int(gui(v).isStereo()); },
         [](SoQtViewer& v, int value) { gui(v).setStereo(value != 0); },
         {}},
    };
    if (!gui(viewer).isOfType(Examiner::getClassTypeId()))
        return all;
    all.insert(
        all.begin() + 1,
        {QT_TRANSLATE_NOOP("SoQtViewer", "&Turning"),
         {{"viewerTurnAutomatic", QT_TRANSLATE_NOOP("SoQtViewer", "&As the scene says"),
           Examiner::AUTOMATIC},
          {"viewerTurntable", QT_TRANSLATE_NOOP("SoQtViewer", "&Turntable: the horizon stays"),
           Examiner::TURNTABLE},
          {"viewerTurnFree", QT_TRANSLATE_NOOP("SoQtViewer", "&Free"), Examiner::FREE}},
         [](SoQtViewer& v) { return int(examiner(v).getTurning()); },
         [](SoQtViewer& v, int value) { examiner(v).setTurning(Examiner::Turning(value)); },
         {}});
    all.push_back({QT_TRANSLATE_NOOP("SoQtViewer", "Sp&in after a flick"),
                   {{"viewerSpin", nullptr, 1}},
                   [](SoQtViewer& v) { return int(examiner(v).isSpinningAllowed()); },
                   [](SoQtViewer& v, int value) { examiner(v).setSpinning(value != 0); },
                   {}});
    return all;
}

ViewerSettings::ViewerSettings(SoQtViewer* viewer, QWidget* whole)
    : m_viewer(viewer), m_settings(settingsOf(*viewer))
{
    for (Setting& setting : m_settings)
        makeActions(setting, whole);
    refresh();
}

void ViewerSettings::makeActions(Setting& setting, QWidget* whole)
{
    const bool isSwitch = setting.choices.size() == 1;
    auto* group = isSwitch ? nullptr : new QActionGroup(whole);
    for (const Choice& choice : setting.choices) {
        auto* action = new QAction(translated(isSwitch ? setting.text : choice.text), whole);
        action->setObjectName(QLatin1String(choice.name));
        action->setCheckable(true);
        if (group)
            group->addAction(action);
        const int value = choice.value;
        QObject::connect(action, &QAction::triggered, action,
                         [this, &setting, value, isSwitch](bool on) {
                             choose(setting, isSwitch ? int(on) : value);
                         });
        setting.actions.append(action);
    }
}

void ViewerSettings::choose(Setting& setting, int value)
{
    setting.set(*m_viewer, value);
    refresh();
}

void ViewerSettings::addTo(QMenu& menu) const
{
    for (const Setting& setting : m_settings) {
        if (setting.actions.size() == 1)
            menu.addAction(setting.actions[0]);
        else
            menu.addMenu(translated(setting.text))->addActions(setting.actions);
    }
}

QList<QAction*> ViewerSettings::drawStyles() const
{
    return m_settings.front().actions;
}

void ViewerSettings::refresh()
{
    for (const Setting& setting : m_settings) {
        const int value = setting.get(*m_viewer);
        const bool isSwitch = setting.actions.size() == 1;
        for (int i = 0; i < setting.actions.size(); ++i) {
            const int own = setting.choices[static_cast<std::size_t>(i)].value;
            setting.actions[i]->setChecked(isSwitch ? value != 0 : value == own);
        }
    }
}
