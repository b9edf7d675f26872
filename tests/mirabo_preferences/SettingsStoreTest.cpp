#include "StoreSupport.h"

#include "mirabo/preferences/Settings.h"
#include "mirabo/preferences/SettingsStore.h"
#include "support/ErrorGuard.h"
#include "support/Passes.h"

#include <kalmyr/base/SoError.h>

#include <unistd.h>

using namespace mirabo;

namespace {

class SettingsStoreTest : public StoreTest {
protected:
    /// What a tool does: reads, changes, ends.
    static void runTool()
    {
        readShowCatalogPart();
        writeShowCatalogPart(true);
        EXPECT_TRUE(readShowCatalogPart());
        releaseSettings();
    }

    /// Opens the store, which must be a new one; what it told.
    static QString openInsteadOf(const char* why)
    {
        SCOPED_TRACE(why);
        const auto errors = support::expectErrors();
        QString told;
        setSettingsListener([&told](const QString& message) { told += message; });
        EXPECT_TRUE(readHighlightSelectedNode());
        runTool();
        runTool(); // as the next one finds it
        setSettingsListener({});
        EXPECT_EQ(errors.count(), 1U);
        EXPECT_TRUE(errors.contains(told.toStdString()));
        return told;
    }
};

constexpr char kNewerStore[] = "[Store]\nVersion=1000\n[TreeViewPreferences]\n"
                               "HighlightSelectedNode=false\nNewThing=@Variant(3)\n";

} // namespace

TEST_F(SettingsStoreTest, HasAVersionOnceSomethingIsWritten)
{
    readHighlightSelectedNode();
    releaseSettings();
    EXPECT_FALSE(QFile::exists(place())); // reading writes nothing
    writeHighlightSelectedNode(false);
    releaseSettings();
    EXPECT_EQ(valueOnDisk("Store/Version"), QString::number(SettingsStore::kVersion));
}

TEST_F(SettingsStoreTest, BringsAStoreWithoutAVersionUpToDate)
{
    put("[TreeViewPreferences]\nNode%20Type\\size=1000000\nNode%20Type\\red=12\n"
        "Node%20Type\\green=much\nHighlightSelectedNode=1\n[Elsewhere]\nthing=perhaps\n");
    EXPECT_TRUE(readHighlightSelectedNode());
    releaseSettings();
    EXPECT_EQ(valueOnDisk("Store/Version"), "1");
    EXPECT_EQ(valueOnDisk("TreeViewPreferences/Node Type/size"), "96");
    EXPECT_EQ(valueOnDisk("TreeViewPreferences/Node Type/red"), "12");
    EXPECT_EQ(valueOnDisk("TreeViewPreferences/Node Type/green"), "");
    EXPECT_EQ(valueOnDisk("TreeViewPreferences/HighlightSelectedNode"), "true");
    EXPECT_EQ(valueOnDisk("Elsewhere/thing"), "perhaps"); // nobody knows whose it is

    // Once: later damage is read within the limits, and left to whoever made it.
    const QByteArray stored = bytes().replace("size=96", "size=300");
    put(stored);
    EXPECT_EQ(readInt("/TreeViewPreferences/Node Type/size"), 96);
    releaseSettings();
    EXPECT_EQ(bytes(), stored);
}

TEST_F(SettingsStoreTest, TakesAVersionThatMakesNoSenseForNone)
{
    for (const char* version : {"soon", "-3", "0", ""}) {
        put(QByteArray("[Store]\nVersion=") + version
            + "\n[TreeViewPreferences]\nHighlightSelectedNode=false\n");
        EXPECT_FALSE(readHighlightSelectedNode());
        releaseSettings();
        EXPECT_EQ(valueOnDisk("Store/Version"), "1") << version;
    }
    EXPECT_TRUE(kept().isEmpty());
}

TEST_F(SettingsStoreTest, KeepsANewerStoreAside)
{
    put(kNewerStore);
    const QString told = openInsteadOf("it is newer");
    EXPECT_TRUE(told.contains("newer version (1000)")) << told.toStdString();
    ASSERT_EQ(kept(), QStringList({"MiraboViewer.conf.kept-1"}));
    EXPECT_TRUE(told.contains(kept()[0])) << told.toStdString();
    EXPECT_EQ(bytesOf(folder() + "/" + kept()[0]), kNewerStore);
    EXPECT_EQ(valueOnDisk("Store/Version"), "1");

    // Another one does not take its place.
    put("[Store]\nVersion=99999999999999\n");
    openInsteadOf("it is newer still");
    EXPECT_EQ(kept().size(), 2);
    EXPECT_EQ(bytesOf(folder() + "/" + kept()[0]), kNewerStore);
}

TEST_F(SettingsStoreTest, KeepsADamagedStoreAside)
{
    const QByteArray damaged[] = {"garbage", QByteArray(4096, '\0'),
                                  "\x89PNG\r\n\x1a\n\x00\x01\xff\xfe",
                                  "[TreeViewPreferences\nHighlightSelectedNode=false\nNode"};
    int count = 0;
    for (const QByteArray& each : damaged) {
        put(each);
        EXPECT_TRUE(openInsteadOf(each.constData()).contains("damaged"));
        ASSERT_EQ(kept().size(), ++count);
        EXPECT_EQ(bytesOf(folder() + "/" + kept().last()), each);
        EXPECT_TRUE(bytes().contains("ShowCatalogPart=true"));
    }
}

TEST_F(SettingsStoreTest, KeepsAFolderInItsPlaceAside)
{
    QDir().mkpath(place() + "/inside");
    EXPECT_TRUE(openInsteadOf("it is a folder").contains("cannot be read"));
    ASSERT_EQ(kept().size(), 1);
    EXPECT_TRUE(QDir(folder() + "/" + kept()[0] + "/inside").exists());
    EXPECT_TRUE(bytes().contains("ShowCatalogPart=true"));
}

TEST_F(SettingsStoreTest, LeavesAStoreThatCannotBeMovedAsItIs)
{
    // All names that it could get are taken.
    for (int i = 1; i <= 100; ++i)
        QDir().mkpath(place() + ".kept-" + QString::number(i));
    put("garbage");
    auto errors = support::expectErrors();
    for (int i = 0; i < 2; ++i) {
        runTool();
        EXPECT_EQ(bytes(), "garbage"); // found damaged again
        EXPECT_EQ(errors.count(), 1U);
        errors.clear();
    }
    put(kNewerStore);
    QString told;
    setSettingsListener([&told](const QString& message) { told += message; });
    EXPECT_TRUE(readHighlightSelectedNode());
    writeShowCatalogPart(true);
    writeListColumnWidth(kFieldWatchGroup, 5, 77);
    syncSettings();
    EXPECT_TRUE(readShowCatalogPart());
    EXPECT_EQ(readListColumnWidth(kFieldWatchGroup, 5), 77);
    releaseSettings();
    EXPECT_EQ(bytes(), kNewerStore);
    EXPECT_EQ(errors.count(), 1U);
    EXPECT_TRUE(told.contains("left as it is")) << told.toStdString();
}

/// The folder cannot be made: there is a file.
TEST_F(SettingsStoreTest, TellsOnceThatItCannotBeWritten)
{
    QFile file(folder());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    readHighlightSelectedNode(); // which nobody need know of
    const auto errors = support::expectErrors();
    QStringList told;
    writeShowCatalogPart(true);
    support::flush(); // by the event loop
    EXPECT_EQ(errors.count(), 1U);
    applyStyles(kTreeGroup, 5);
    applyStyles(kFieldWatchGroup, 6);
    writeHighlightSelectedNode(false);
    setSettingsListener([&told](const QString& message) { told << message; });
    ASSERT_EQ(told.size(), 1); // who comes later is told, too
    EXPECT_TRUE(told[0].contains("cannot be written")) << told[0].toStdString();
    syncSettings();
    EXPECT_FALSE(readHighlightSelectedNode());
    EXPECT_TRUE(readShowCatalogPart());
    releaseSettings();
    EXPECT_EQ(errors.count(), 1U);
    EXPECT_EQ(told.size(), 1);
}

TEST_F(SettingsStoreTest, ReadsAStoreInAFolderWithoutPermissionToWrite)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "the superuser may write everywhere";
    const QByteArray stored =
        "[Store]\nVersion=1\n[NodeOverviewPreferences]\nShowCatalogPart=true\n";
    put(stored);
    QFile::setPermissions(place(), QFile::ReadOwner);
    QFile::setPermissions(folder(), QFile::ReadOwner | QFile::ExeOwner);
    EXPECT_TRUE(readShowCatalogPart());
    {
        const auto errors = support::expectErrors();
        writeShowCatalogPart(false);
        syncSettings();
        writeShowCatalogPart(true);
        syncSettings();
        EXPECT_EQ(errors.count(), 1U);
        releaseSettings();
    }
    EXPECT_EQ(bytes(), stored);

    // Nor to read: it cannot be moved either.
    QFile::setPermissions(place(), {});
    {
        const auto errors = support::expectErrors();
        EXPECT_FALSE(readShowCatalogPart());
        EXPECT_TRUE(errors.contains("cannot be read"));
        releaseSettings();
    }
    QFile::setPermissions(place(), QFile::ReadOwner | QFile::WriteOwner);
    QFile::setPermissions(folder(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    EXPECT_EQ(bytes(), stored);
}

TEST_F(SettingsStoreTest, MayBeClosedByWhoHearsOfItsTrouble)
{
    QFile file(folder());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    static bool heard;
    heard = false;
    SoError::setHandlerCallback([](const SoError*, void*) {
        heard = true;
        releaseSettings();
    });
    writeShowCatalogPart(true);
    support::flush();
    EXPECT_TRUE(heard);
    EXPECT_FALSE(readShowCatalogPart()); // another store by now
}

TEST_F(SettingsStoreTest, WritesWhatIsChangedTogetherAtOnce)
{
    {
        const SettingsChange page;
        applyStyles(kTreeGroup, 40);
        writeHighlightSelectedNode(false);
        EXPECT_FALSE(QFile::exists(place()));
    }
    EXPECT_EQ(valueOnDisk("TreeViewPreferences/Node Type/red"), "40");
    EXPECT_EQ(valueOnDisk("TreeViewPreferences/HighlightSelectedNode"), "false");
    writeHighlightSelectedNode(true);
    EXPECT_EQ(valueOnDisk("TreeViewPreferences/HighlightSelectedNode"), "false");
    support::flush();
    EXPECT_EQ(valueOnDisk("TreeViewPreferences/HighlightSelectedNode"), "true");
}
