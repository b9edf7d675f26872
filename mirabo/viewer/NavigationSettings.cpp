#include "mirabo/viewer/NavigationSettings.h"

#include "mirabo/preferences/Settings.h"

#include <kalmyr/gui/SoGuiExaminerViewer.h>
#include <kalmyr/qt/SoQtViewer.h>

namespace mirabo {

namespace {

constexpr char kScheme[] = "/MiraboViewer/Navigation/Scheme";
constexpr char kTurning[] = "/MiraboViewer/Navigation/Turning";
constexpr char kSpin[] = "/MiraboViewer/Navigation/Spin";
constexpr char kSamples[] = "/MiraboViewer/Samples";

SoGuiExaminerViewer& examiner(const SoQtViewer& viewer)
{
    return static_cast<SoGuiExaminerViewer&>(*viewer.getGuiViewer());
}

} // namespace

void readNavigationSettings(SoQtViewer& viewer)
{
    SoGuiExaminerViewer& gui = examiner(viewer);
    gui.setNavigationScheme(static_cast<SoGuiViewer::Scheme>(readInt(kScheme)));
    gui.setTurning(static_cast<SoGuiExaminerViewer::Turning>(readInt(kTurning)));
    gui.setSpinning(readBool(kSpin));
    viewer.setNumSamples(readInt(kSamples));
}

void writeNavigationSettings(const SoQtViewer& viewer)
{
    const SettingsChange change;
    const SoGuiExaminerViewer& gui = examiner(viewer);
    writeSetting(kScheme, static_cast<int>(gui.getNavigationScheme()));
    writeSetting(kTurning, static_cast<int>(gui.getTurning()));
    writeSetting(kSpin, gui.isSpinningAllowed());
    writeSetting(kSamples, viewer.getNumSamples());
}

} // namespace mirabo
