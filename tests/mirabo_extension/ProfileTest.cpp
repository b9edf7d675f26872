#include "ExtensionTool.h"

#include "mirabo/extender/MrbCommand.h"
#include "mirabo/extension/ExtensionsPage.h"
#include "mirabo/preferences/SoMiraboPreferences.h"
#include "support/Passes.h"

#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

#include <functional>

Q_DECLARE_METATYPE(std::function<void()>)

namespace {

class Profile : public ExtensionTool {};

TEST_F(Profile, DecidesWhatIsActive)
{
    ASSERT_TRUE(manager()->read(configuration(active("Everything") + active("Listener")), false));
    EXPECT_EQ(manager()->getActiveProfile()->name, "On");
    EXPECT_EQ(manager()->getExtensions().size(), 2u);
    EXPECT_FALSE(manager()->setActiveProfile("Nobody"));
    EXPECT_EQ(manager()->getExtensions().size(), 2u);
    EXPECT_TRUE(manager()->setActiveProfile("Off"));
    EXPECT_TRUE(manager()->getExtensions().empty());
    // Read again, as a start does while the end of the last one is pending.
    ASSERT_TRUE(manager()->read(configuration(active("Listener")), false));
    EXPECT_EQ(manager()->getExtensions().size(), 1u);
    EXPECT_TRUE(manager()->getProblems().empty());
}

TEST_F(Profile, PutsControlledExtensionsUnderTheirParents)
{
    ASSERT_TRUE(manager()->read(
        configuration(active("Parent", controlled("Child") + controlled("Listener"))), false));
    EXPECT_EQ(takeLog(), (QStringList{"create Parent", "activate Parent", "create Child",
                                      "activate Child", "add Child to Parent", "create Listener",
                                      "activate Listener", "add Listener to Parent"}));
    EXPECT_EQ(manager()->getExtensions().size(), 3u);
    ASSERT_TRUE(manager()->setActiveProfile("Off"));
    EXPECT_EQ(takeLog(), (QStringList{"remove Listener from Parent", "deactivate Listener",
                                      "~Listener", "remove Child from Parent", "deactivate Child",
                                      "~Child", "deactivate Parent", "~Parent"}));
}

TEST_F(Profile, AControlledExtensionFailsAloneAndAParentWithItsOwn)
{
    const QString text = configuration(active("Parent", controlled("Child")) + active("Listener"));
    {
        auto errors = support::expectErrors();
        ASSERT_TRUE(manager()->read(text, false));
        failAt("node Child");
        services()->setSelectedNode(nullptr);
        EXPECT_TRUE(support::passUntil([&] { return errors.contains("\"Child\""); }));
        support::flush();
    }
    EXPECT_FALSE(find("Child"));
    EXPECT_TRUE(find("Parent"));
    EXPECT_TRUE(takeLog().contains("remove Child from Parent"));

    auto errors = support::expectErrors();
    failAt("add Child to Parent");
    ASSERT_TRUE(manager()->read(text, false));
    EXPECT_FALSE(find("Parent"));
    EXPECT_FALSE(find("Child"));
    EXPECT_TRUE(find("Listener"));
}

TEST_F(Profile, NamesOnlyWhatIsThere)
{
    auto errors = support::expectErrors();
    const QString other = "<activeExtension plugin=\"NotLoaded\" extension=\"X\"/>";
    ASSERT_TRUE(manager()->read(
        configuration(other + active("Unknown") + active("Listener") + active("Listener")), false));
    EXPECT_EQ(errors.count(), 3u);
    EXPECT_TRUE(errors.contains("loads no such plug-in"));
    EXPECT_TRUE(errors.contains("Everything, Listener, Parent, Child"));
    EXPECT_TRUE(errors.contains("twice"));
    EXPECT_EQ(manager()->getExtensions().size(), 1u);
    errors.clear();
    ASSERT_TRUE(manager()->read("<configuration><profiles default=\"Gone\"><profile name=\"A\"/>"
                                "</profiles></configuration>",
                                false));
    EXPECT_TRUE(errors.contains("no profile \"Gone\""));
}

TEST_F(Profile, ABuiltInPluginMayBeMissing)
{
    ASSERT_TRUE(manager()->read(configuration({}, "TestMissing"), false));
    EXPECT_EQ(manager()->getProblems().size(), 1u) << "told to who asks, posted to nobody";
}

TEST_F(Profile, AFaultyConfigurationChangesNothing)
{
    ASSERT_TRUE(manager()->read(configuration(active("Listener")), false));
    auto errors = support::expectErrors();
    EXPECT_FALSE(manager()->read("<configuration><plugins></configuration>", false));
    EXPECT_FALSE(manager()->read("<other/>", false));
    EXPECT_FALSE(manager()->read("/no/such/file.xml", true));
    EXPECT_EQ(errors.count(), 3u);
    EXPECT_TRUE(find("Listener"));
}

TEST_F(Profile, FindsPluginsBesideTheConfiguration)
{
    qputenv("KMR_MIRABO_PLUGIN_PATH", "/no/such/folder");
    const QTemporaryDir folder;
    ASSERT_TRUE(QFile::copy(MIRABO_LIBRARY_DIR "/test-plugins/libTestEverything.so",
                            folder.filePath("libTestEverything.so")));
    QFile file(folder.filePath("MrbConfiguration.xml"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(configuration(active("Listener")).toUtf8());
    file.close();
    ASSERT_TRUE(manager()->read(file.fileName(), true));
    EXPECT_TRUE(find("Listener"));
    const QStringList path = manager()->getSearchPath();
    EXPECT_EQ(path.first(), "/no/such/folder");
    EXPECT_TRUE(path.contains(MIRABO_LIBRARY_DIR "/mirabo-plugins"));
    EXPECT_TRUE(path.contains(MIRABO_LIBRARY_DIR));
    EXPECT_EQ(path.last(), folder.path());
}

TEST_F(Profile, OffersPreferencePages)
{
    ASSERT_TRUE(manager()->read(configuration(active("Listener") + active("Everything")), false));
    takeLog();
    QWidget dialog;
    const auto pages = manager()->createPreferencePages(&dialog);
    ASSERT_EQ(pages.size(), 1u);
    EXPECT_EQ(pages[0].name, "Everything");
    EXPECT_EQ(pages[0].widget->parentWidget(), &dialog);
    pages[0].load();
    pages[0].save();
    EXPECT_TRUE(takeLog().endsWith("save"));
    const QPointer<QWidget> page = pages[0].widget;
    ASSERT_TRUE(manager()->setActiveProfile("Off"));
    EXPECT_FALSE(page) << "its code may go";
    pages[0].load();
}

TEST_F(Profile, IsNotChangedFromWithinAnExtension)
{
    ASSERT_TRUE(manager()->read(configuration(active("Everything")), false));
    const auto doWithin = [](const std::function<void()>& task) {
        qApp->setProperty("task", QVariant::fromValue(task));
        services()->setSelectedNode(nullptr);
        qApp->setProperty("task", QVariant());
    };
    {
        auto errors = support::expectErrors();
        doWithin([] {
            EXPECT_FALSE(manager()->setActiveProfile("Off"));
            EXPECT_FALSE(manager()->read(configuration({}), false));
        });
        EXPECT_EQ(errors.count(), 2u);
    }
    const QPointer<MrbExtension> extension = find("Everything");
    ASSERT_TRUE(extension);
    // A host may stop the tool from anywhere.
    doWithin([] { MrbPluginsManager::releaseInstance(); });
    EXPECT_TRUE(extension) << "its code was still running";
    takeLog();
    services()->setSelectedNode(nullptr);
    EXPECT_EQ(takeLog(), QStringList()) << "cut off";
}

TEST_F(Profile, PagesLiveInThePreferencesDialog)
{
    ASSERT_TRUE(manager()->read(configuration(active("Everything")), false));
    SoMiraboPreferences dialog;
    EXPECT_EQ(dialog.getPageCount(), 0);
    for (const auto& page : manager()->createPreferencePages(&dialog))
        dialog.addPage(page);
    ASSERT_EQ(dialog.getPageCount(), 1);
    auto* list = dialog.findChild<QListWidget*>("m_preferenceList");
    EXPECT_EQ(list->currentItem()->text(), "Everything");
    dialog.show();
    takeLog();
    const auto click = [&dialog](const char* button) {
        dialog.findChild<QPushButton*>(button)->click();
        return takeLog();
    };
    EXPECT_EQ(click("m_applyButton"), QStringList("save"));
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(click("m_cancelButton"), QStringList());
    EXPECT_FALSE(dialog.isVisible());
    dialog.show();
    EXPECT_EQ(click("m_okButton"), QStringList("save"));
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    dialog.show();
    ASSERT_TRUE(manager()->setActiveProfile("Off"));
    EXPECT_EQ(dialog.getPageCount(), 0) << "its extension has ended";
    EXPECT_EQ(list->count(), 0);
}

TEST_F(Profile, APageOfThePreferencesTellsWhatRunsAndWhy)
{
    auto errors = support::expectErrors();
    failAt("activate Child");
    ASSERT_TRUE(
        manager()->read(configuration(active("Parent", controlled("Child") + controlled("Listener"))
                                      + "<activeExtension plugin=\"NotLoaded\" extension=\"X\"/>"),
                        false));
    SoMiraboPreferences dialog;
    dialog.addPage((new mirabo::ExtensionsPage(&dialog))->asPage());
    auto* rows = dialog.findChild<QTreeWidget*>("extensionRows");
    const auto* cause = dialog.findChild<QLabel*>("extensionCause");
    auto* profiles = dialog.findChild<QComboBox*>("extensionProfiles");
    ASSERT_EQ(rows->topLevelItemCount(), 2);
    EXPECT_EQ(rows->topLevelItem(0)->childCount(), 2);
    EXPECT_EQ(rows->topLevelItem(0)->text(1), "1") << "its version";
    EXPECT_EQ(rows->topLevelItem(0)->child(1)->text(2), "running");
    EXPECT_TRUE(cause->text().contains("Parent view"));
    rows->setCurrentItem(rows->topLevelItem(0)->child(0));
    EXPECT_TRUE(cause->text().contains("told to fail at activate Child"))
        << cause->text().toStdString();
    EXPECT_TRUE(rows->topLevelItem(1)->toolTip(2).contains("loads no such plug-in"));

    EXPECT_EQ(profiles->currentText(), "On");
    profiles->setCurrentText("Off");
    EXPECT_TRUE(find("Parent")) << "not before Apply";
    dialog.findChild<QPushButton*>("m_applyButton")->click();
    EXPECT_FALSE(find("Parent"));
    EXPECT_EQ(rows->topLevelItemCount(), 0);
    EXPECT_FALSE(cause->text().isEmpty());
}

class Counting final : public MrbCommand {
public:
    explicit Counting(int& alive) : m_alive(alive) { ++m_alive; }
    ~Counting() override { --m_alive; }
    bool execute() override { return true; }
    void undo() override {}
    void redo() override {}

private:
    int& m_alive;
};

class Commands : public ExtensionTool {
protected:
    void SetUp() override
    {
        ExtensionTool::SetUp();
        ASSERT_TRUE(manager()->read(configuration(active("Everything")), false));
        takeLog();
    }
    static void push()
    {
        bool done = false;
        QMetaObject::invokeMethod(find("Everything"), "push", Q_RETURN_ARG(bool, done));
        EXPECT_TRUE(done);
    }
    void pushOwn() { services()->pushCommand(new Counting(m_alive)); }

    int m_alive = 0;
};

TEST_F(Commands, AreExecutedUndoneAndRedone)
{
    push();
    services()->undo();
    services()->redo();
    EXPECT_EQ(takeLog(), (QStringList{"getInfo", "execute", "undo", "redo"}));
}

TEST_F(Commands, LeaveTheStackWithTheirExtension)
{
    pushOwn();
    push();
    pushOwn();
    pushOwn();
    push();
    pushOwn();
    services()->undo();
    services()->undo();
    services()->undo();
    // Own, ext, own | own, ext, own: only what has no gap between it and now is left.
    ASSERT_TRUE(manager()->setActiveProfile("Off"));
    EXPECT_EQ(undoStack().count(), 2);
    EXPECT_EQ(undoStack().currentIndex(), 0);
    EXPECT_EQ(m_alive, 2);
    EXPECT_EQ(takeLog().count("~command"), 2);
    services()->redo();
    EXPECT_FALSE(undoStack().canRedo());
    services()->undo();
    services()->undo();
    EXPECT_FALSE(undoStack().canUndo());
    services()->redo();
    services()->undo();
    // The stack does not delete what it still holds.
    undoStack().remove([](const MrbCommand*) { return true; });
    EXPECT_EQ(m_alive, 0);
}

TEST_F(Commands, ThatTheStackForgotAreDeleted)
{
    push();
    push();
    undoStack().clear();
    EXPECT_EQ(takeLog().count("~command"), 0);
    ASSERT_TRUE(manager()->setActiveProfile("Off"));
    EXPECT_EQ(takeLog().count("~command"), 2);
}

} // namespace
