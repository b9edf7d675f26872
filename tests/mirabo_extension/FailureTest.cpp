#include "ExtensionTool.h"
#include "support/Passes.h"

#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/shapes/SoCube.h>

#include <QFile>
#include <QPushButton>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QToolBar>
#include <QToolButton>

#include <functional>

namespace {

/// One operation of an extension, and what makes the tool call it.
struct Callback {
    const char* name;
    std::function<void()> provoke;
};

MrbExtension* everything()
{
    for (MrbExtension* extension : MrbPluginsManager::getInstance()->getExtensions())
        if (QString(extension->metaObject()->className()) == "Everything")
            return extension;
    return nullptr;
}

void invoke(const char* method)
{
    if (MrbExtension* extension = everything())
        QMetaObject::invokeMethod(extension, method);
}

MrbServicesImpl* tool()
{
    return MrbServicesImpl::getInstance();
}

void click(QWidget* widget)
{
    QTest::mouseClick(widget, Qt::LeftButton);
}

QWidget* named(const char* name)
{
    for (QWidget* widget : QApplication::allWidgets())
        if (widget->objectName() == name)
            return widget;
    return nullptr;
}

void clickFirstEntry(const char* menuName)
{
    auto* menu = qobject_cast<QMenu*>(named(menuName));
    menu->popup(QPoint(50, 50));
    QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(menu->actions()[0]).center());
    if (menu)
        menu->hide();
}

void clickTool()
{
    auto* bar = qobject_cast<QToolBar*>(named("everything:toolBar"));
    click(bar->widgetForAction(bar->actions()[0]));
}

void openPreferences(bool save)
{
    QWidget dialog;
    for (const auto& page : MrbPluginsManager::getInstance()->createPreferencePages(&dialog)) {
        page.load();
        if (save)
            page.save();
    }
}

void triggerEntry()
{
    for (QWidget* widget : QApplication::allWidgets())
        for (QAction* action : widget->actions())
            if (action->objectName() == "everything:entry") {
                action->trigger();
                return;
            }
}

const SoRef<SoGroup>& someNode()
{
    static const SoRef<SoGroup> s_node(new SoGroup);
    return s_node;
}

class ThrowingCallback : public ExtensionTool, public ::testing::WithParamInterface<int> {
public:
    static std::vector<Callback> callbacks()
    {
        const auto nothing = [] {};
        return {
            {"create Everything", nothing},
            {"activate", nothing},
            {"getInfo", nothing},
            {"createView", nothing},
            {"selectedNodeChanged", [] { tool()->setSelectedNode(someNode().get()); }},
            {"selectedFieldChanged", [] { tool()->setSelectedField(nullptr); }},
            {"sceneGraphChanged", [] { tool()->announceSceneGraph(someNode().get()); }},
            {"execute", [] { invoke("push"); }},
            {"undo",
             [] {
                 invoke("push");
                 tool()->undo();
             }},
            {"redo",
             [] {
                 invoke("push");
                 tool()->undo();
                 tool()->redo();
             }},
            {"createPreferencePage", [] { openPreferences(false); }},
            {"load", [] { openPreferences(false); }},
            {"save", [] { openPreferences(true); }},
            {"entry", [] { triggerEntry(); }},
            {"button", [] { click(named("everything:button")); }},
            {"tool", [] { clickTool(); }},
            {"menu entry", [] { clickFirstEntry("everything:menu"); }},
            {"contextMenu entry", [] { clickFirstEntry("everything:contextMenu"); }},
            {"timer", [] { invoke("throwLater"); }},
            {"sensor", [] { invoke("changeWatched"); }},
            {"deactivate", [] { MrbPluginsManager::getInstance()->setActiveProfile("Off"); }},
        };
    }
};

// Once more for each place where an extension's code is called.
TEST_P(ThrowingCallback, EndsThatExtensionAndNothingElse)
{
    const Callback callback = callbacks()[static_cast<std::size_t>(GetParam())];
    failAt(callback.name);
    {
        auto errors = support::expectErrors();
        manager()->read(configuration(active("Everything") + active("Listener")), false);
        callback.provoke();
        EXPECT_TRUE(support::passUntil([&] { return errors.count() > 0 && !everything(); }));
        support::flush();
        EXPECT_EQ(errors.count(), 1u);
        EXPECT_TRUE(errors.contains("extension \"Everything\" of plug-in \"TestEverything\""));
        EXPECT_TRUE(errors.contains("told to fail at " + std::string(callback.name)));
    }
    ASSERT_EQ(manager()->getProblems().size(), 1u);
    EXPECT_EQ(manager()->getProblems()[0].extension, "Everything");
    EXPECT_EQ(everything(), nullptr);
    EXPECT_EQ(placed(), QStringList());
    EXPECT_EQ(undoStack().count(), 0);
    if (QString(callback.name) == "deactivate")
        return; // the other one was to end as well
    takeLog();
    tool()->setSelectedNode(someNode().get());
    EXPECT_EQ(takeLog(), QStringList("node Listener"));
}

std::string callbackName(const ::testing::TestParamInfo<int>& info)
{
    return QString(ThrowingCallback::callbacks()[static_cast<std::size_t>(info.param)].name)
        .remove(' ')
        .toStdString();
}

INSTANTIATE_TEST_SUITE_P(All, ThrowingCallback, ::testing::Range(0, 21), callbackName);

TEST_F(ThrowingCallback, ARefusalCountsWithItsReason)
{
    failAt("refuse");
    auto errors = support::expectErrors();
    manager()->read(configuration(active("Everything")), false);
    EXPECT_TRUE(errors.contains("nothing to show"));
    EXPECT_EQ(takeLog(), (QStringList{"create Everything", "activate", "~Everything"}));
}

/// A plug-in that cannot be used, and a part of the cause that the user is told.
struct BadPlugin {
    const char* name;
    const char* cause;
};

class UnusablePlugin : public ExtensionTool, public ::testing::WithParamInterface<BadPlugin> {};

TEST_P(UnusablePlugin, IsReportedWithItsNameAndLeftOut)
{
    QFile file(QDir::tempPath() + "/mirabo-extension-test.xml");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QString("<configuration><plugins><loadPlugin file=\"%1\"/>"
                       "<loadPlugin file=\"TestEverything\"/></plugins>"
                       "<profiles default=\"On\"><profile name=\"On\">"
                       "<activeExtension plugin=\"%1\" extension=\"Any\"/>"
                       "%2</profile></profiles></configuration>")
                   .arg(GetParam().name, active("Listener"))
                   .toUtf8());
    file.close();
    auto errors = support::expectErrors();
    EXPECT_TRUE(manager()->read(file.fileName(), true));
    file.remove();
    EXPECT_EQ(errors.count(), 1u);
    EXPECT_TRUE(errors.contains(std::string("plug-in \"") + GetParam().name + "\""));
    EXPECT_TRUE(errors.contains(GetParam().cause))
        << manager()->getProblems().at(0).cause.toStdString();
    EXPECT_TRUE(find("Listener")) << "the others run";
}

INSTANTIATE_TEST_SUITE_P(All, UnusablePlugin,
                         ::testing::Values(BadPlugin{"TestMissing", "no such library"},
                                           BadPlugin{"TestGarbage", "libTestGarbage.so"},
                                           BadPlugin{"TestPlain", "libTestPlain.so"},
                                           BadPlugin{"TestUnresolved", "makeFromElsewhere"},
                                           BadPlugin{"TestForeign", "org.example.Other"},
                                           BadPlugin{"TestNewer", "built for version 99.0"},
                                           BadPlugin{"TestThrowing", "no licence found"}),
                         [](const auto& info) { return std::string(info.param.name); });

// Every length of a broken download, so to speak.
TEST_F(UnusablePlugin, MayBeCutShortAnywhere)
{
    QFile whole(MIRABO_LIBRARY_DIR "/test-plugins/libTestEverything.so");
    ASSERT_TRUE(whole.open(QIODevice::ReadOnly));
    const QByteArray bytes = whole.readAll();
    const QTemporaryDir folder;
    for (const int part : {0, 1, 20, 50, 90}) {
        QFile cut(folder.filePath(QString("libCut%1.so").arg(part)));
        ASSERT_TRUE(cut.open(QIODevice::WriteOnly));
        cut.write(bytes.left(bytes.size() / 100 * part + part));
        cut.close();
        auto errors = support::expectErrors();
        manager()->read(configuration({}, cut.fileName()), false);
        EXPECT_EQ(manager()->getProblems().size(), 1u) << part;
    }
}

} // namespace
