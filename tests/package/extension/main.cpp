// A host that runs the example extension, built outside the tree, in the installed inspector.

#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/shapes/SoCube.h>
#include <mirabo/extender/MrbPluginsManager.h>
#include <mirabo/extender/MrbServices.h>
#include <mirabo/extender/MrbShell.h>
#include <mirabo/launch/SoMirabo.h>

#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QSettings>
#include <QSpinBox>
#include <QTemporaryDir>

#include <cstdio>

namespace {

int s_failures = 0;

void expect(bool holds, const char* what)
{
    if (holds)
        return;
    std::printf("consumer: failed: %s\n", what);
    ++s_failures;
}

QString shown(const char* row)
{
    const auto* label = MrbServices::getInstance()->getMainWindow()->findChild<QLabel*>(row);
    return label ? label->text() : QString("no row");
}

void followTheSelection(SoCube* cube)
{
    MrbServices::getInstance()->setSelectedNode(cube);
    expect(shown("type") == "Cube", "the view shows the type of the selected node");
    expect(shown("size") == "2.000 x 2.000 x 2.000", "the view shows its size");
    cube->width = 3.0f;
    SoSensorManager::processDelayQueue(false); // a host serves its own sensors
    expect(shown("size") == "3.000 x 2.000 x 2.000", "the view follows the node");
    cube->width = 2.0f;
}

void tintAndUndo(SoSeparator* root)
{
    MrbServices* services = MrbServices::getInstance();
    services->setSelectedNode(root);
    const auto menus = MrbShell::getInstance()->contextMenusFor(root->getTypeId());
    expect(menus.size() == 1, "a group has the context menu");
    expect(MrbShell::getInstance()->contextMenusFor(SoCube::getClassTypeId()).isEmpty(),
           "a shape has none");
    const int before = root->getNumChildren();
    menus.first()->actions().first()->trigger();
    expect(root->getNumChildren() == before + 1
               && root->getChild(0)->isOfType(SoMaterial::getClassTypeId()),
           "the entry puts a material first");
    services->undo();
    expect(root->getNumChildren() == before, "undo takes it away");
    services->redo();
    services->undo();
    expect(root->getNumChildren() == before, "and again after redo");
}

void changePreferences(SoCube* cube)
{
    MrbServices::getInstance()->setSelectedNode(cube);
    QWidget dialog;
    const auto pages = MrbPluginsManager::getInstance()->createPreferencePages(&dialog);
    expect(pages.size() == 1 && pages[0].name == "Measure", "there is a preference page");
    pages[0].load();
    dialog.findChild<QSpinBox*>()->setValue(1);
    pages[0].save();
    expect(shown("size") == "2.0 x 2.0 x 2.0", "saving it reaches the view");
    dialog.findChild<QSpinBox*>()->setValue(3);
    pages[0].save();
}

void session(SoSeparator* root, SoCube* cube)
{
    SoMirabo::start(root);
    expect(SoMirabo::isRunning(), "the inspector starts");
    for (const auto& problem : MrbPluginsManager::getInstance()->getProblems())
        expect(false, problem.cause.toUtf8().constData());
    if (s_failures == 0) {
        followTheSelection(cube);
        tintAndUndo(root);
        changePreferences(cube);
    }
    SoMirabo::stop();
    expect(!SoMirabo::isRunning(), "the inspector stops");
    expect(QApplication::allWidgets().isEmpty(), "no widget is left");
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("KMR_MIRABO_PLUGIN_PATH", PLUGIN_FOLDER);
    qputenv("KMR_MIRABO_CONFIGURATION_FILE", CONFIGURATION);
    QApplication application(argc, argv);
    const QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    SoDB::init();
    SoSeparator* root = new SoSeparator;
    root->ref();
    auto* cube = new SoCube;
    root->addChild(cube);
    for (int round = 0; round < 3; ++round)
        session(root, cube);
    expect(root->getRefCount() == 1, "the scene is the host's alone again");
    root->unref();
    std::printf("consumer: %d failures\n", s_failures);
    return s_failures == 0 ? 0 : 1;
}
