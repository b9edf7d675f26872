#include "StoreSupport.h"

#include "mirabo/core/RecentFiles.h"
#include "mirabo/preferences/SettingKeys.h"
#include "mirabo/preferences/Settings.h"
#include "mirabo/tree/BookmarkStore.h"
#include "support/ErrorGuard.h"

#include <algorithm>

using namespace mirabo;

namespace {

/// Two tools with one store: this process and another.
class TwoToolsTest : public StoreTest {
protected:
    QString root() const { return QDir::cleanPath(folder() + "/.."); }

    /// The red of every element that is stored for a group.
    QStringList reds(const QString& group) const
    {
        QStringList found;
        const QMap<QString, QString> values = valuesOnDisk();
        for (auto at = values.begin(); at != values.end(); ++at)
            if (("/" + at.key()).startsWith(group) && at.key().endsWith("/red"))
                found << at.value();
        return found;
    }
};

std::vector<BookmarkPath> bookmark(const char* name)
{
    BookmarkPath path;
    path.steps = {{0, "Separator", ""}, {1, "Cube", name}};
    return {path};
}

/// A value that differs from the default and lies within the limits.
QVariant sampleOf(const SettingKey& key)
{
    switch (key.kind) {
    case SettingKey::Flag:
        return !key.fallback.toBool();
    case SettingKey::Number:
        return key.name.startsWith("Store") ? 1 : std::min(key.most, key.least + 77);
    case SettingKey::Text:
        return QString::fromUtf8("a, \"b\"; [c]\\=%20 \xC3\xA9");
    case SettingKey::Texts:
        return QStringList({"one, two", "three"});
    }
    return {};
}

QString textOf(const QVariant& value)
{
    return value.type() == QVariant::StringList ? value.toStringList().join('|') : value.toString();
}

} // namespace

TEST_F(TwoToolsTest, ReadEveryKeyThatOneOfThemWrites)
{
    const auto nameOf = [](const SettingKey& key) {
        return QString("/" + key.name).replace('*', "Node/Part Name");
    };
    for (const SettingKey& key : settingKeys())
        writeSetting(nameOf(key), sampleOf(key));
    releaseSettings();
    OtherTool other(root());
    for (const SettingKey& key : settingKeys())
        EXPECT_EQ(other.ask({"read", nameOf(key)}), textOf(sampleOf(key)))
            << key.name.toStdString();
}

TEST_F(TwoToolsTest, LastApplyWinsPageByPage)
{
    OtherTool other(root());
    applyStyles(kTreeGroup, 10);
    other.ask({"read", "/TreeViewPreferences/Node Type/red"}); // it has the store open
    other.ask({"applyStyles", kNodeOverviewGroup, "200"});
    applyStyles(kFieldWatchGroup, 30);
    EXPECT_EQ(reds(kTreeGroup), QStringList({"10", "10", "10", "10"}));
    EXPECT_EQ(reds(kNodeOverviewGroup), QStringList({"200", "200"}));
    EXPECT_EQ(reds(kFieldWatchGroup), QStringList({"30", "30"}));

    // The same page: whole as the later one has it, and the earlier one sees that next time.
    other.ask({"applyStyles", kTreeGroup, "222"});
    EXPECT_EQ(reds(kTreeGroup), QStringList({"222", "222", "222", "222"}));
    applyStyles(kNodeOverviewGroup, 4);
    StyleTable styles = defaultTreeStyles();
    readStyles(kTreeGroup, styles);
    EXPECT_EQ(styles["Node Type"].color, QColor(222, 222, 222));
    EXPECT_EQ(reds(kTreeGroup), QStringList({"222", "222", "222", "222"}));
    EXPECT_EQ(other.ask({"read", "/Store/Version"}), "1");
}

TEST_F(TwoToolsTest, EndOfOneLeavesWhatTheOtherHasChangedMeanwhile)
{
    applyStyles(kTreeGroup, 10);
    writeShowCatalogPart(true);
    syncSettings();
    {
        OtherTool other(root());
        EXPECT_EQ(other.ask({"read", "/NodeOverviewPreferences/ShowCatalogPart"}), "true");
        applyStyles(kTreeGroup, 111);
        writeShowCatalogPart(false);
        syncSettings();
        other.ask({"write", "/MiraboViewer/MiraboMainFrame/WindowWidth", "640"});
    }
    EXPECT_EQ(reds(kTreeGroup), QStringList({"111", "111", "111", "111"}));
    EXPECT_EQ(valueOnDisk("NodeOverviewPreferences/ShowCatalogPart"), "false");
    EXPECT_EQ(valueOnDisk("MiraboViewer/MiraboMainFrame/WindowWidth"), "640");
}

TEST_F(TwoToolsTest, PagesStayWholeWhileBothApplyThem)
{
    constexpr int kTimes = 30;
    OtherTool other(root());
    other.ask({"sync"}); // it runs
    for (const char* theirs : {kTreeGroup, kNodeOverviewGroup}) {
        other.begin({"applyStylesOften", theirs, QString::number(kTimes)});
        for (int i = 0; i < kTimes; ++i) {
            applyStyles(kTreeGroup, 10 + i);
            const QStringList seen = reds(kTreeGroup);
            EXPECT_EQ(seen.count(seen.value(0)), 4) << seen.join(" ").toStdString();
        }
        other.answer();
    }
    for (const char* group : {kTreeGroup, kNodeOverviewGroup}) {
        const QStringList seen = reds(group);
        EXPECT_EQ(seen.count(seen.value(0)), seen.size()) << seen.join(" ").toStdString();
        EXPECT_FALSE(seen.isEmpty());
    }
    EXPECT_TRUE(kept().isEmpty());
}

TEST_F(TwoToolsTest, RecentFilesOfBothAreKept)
{
    RecentFiles recent;
    for (const char* path : {"/c", "/b", "/a"})
        recent.add(path);
    recent.write();
    OtherTool other(root());
    EXPECT_EQ(other.ask({"readRecentFiles"}), "/a|/b|/c");
    other.ask({"addRecentFile", "/theirs"});
    recent.add("/mine");
    recent.add("/b");
    recent.write();
    EXPECT_EQ(recent.paths(), QStringList({"/b", "/mine", "/a", "/c"}));
    EXPECT_EQ(other.ask({"writeRecentFiles"}), "/theirs|/b|/mine|/a|/c");
    recent.write(); // nothing new here
    EXPECT_EQ(recent.paths(), QStringList({"/theirs", "/b", "/mine", "/a", "/c"}));
    for (int i = 0; i < 12; ++i)
        recent.add("/many" + QString::number(i));
    recent.write();
    EXPECT_EQ(recent.paths().size(), RecentFiles::kMaxCount);
    EXPECT_EQ(recent.paths().front(), "/many11");
}

TEST_F(TwoToolsTest, BookmarksThatOneDidNotTouchStayAsTheOtherHasThem)
{
    const auto first = bookmark("First");
    const auto second = bookmark("Second");
    writeBookmarks("scene", first, {});
    OtherTool other(root());
    other.ask({"readBookmarks"});
    writeBookmarks("scene", second, first);
    writeBookmarks("another scene", first, {});
    other.ask({"writeBookmarks"}); // those that it has read, at its end
    syncSettings();
    ASSERT_EQ(readBookmarks("scene").size(), 1U);
    EXPECT_EQ(readBookmarks("scene")[0].toJson(), second[0].toJson());
    EXPECT_EQ(readBookmarks("another scene").size(), 1U);
    EXPECT_EQ(readTexts("/Bookmarks/Scenes"), QStringList({"scene", "another scene"}));
    writeBookmarks("scene", {}, second);
    EXPECT_EQ(other.ask({"sync"}), "");
    EXPECT_EQ(other.ask({"read", "/Bookmarks/Scenes"}), "another scene");
}

TEST_F(TwoToolsTest, ShareTheStoreThatFollowsADamagedOne)
{
    put("no settings at all");
    const auto errors = support::expectErrors();
    writeShowCatalogPart(true);
    syncSettings();
    OtherTool other(root());
    other.ask({"write", "/TreeViewPreferences/RealVRMLCounter", "true"});
    other.ask({"sync"});
    syncSettings();
    EXPECT_TRUE(readShowCatalogPart() && readRealVrmlCounter());
    EXPECT_EQ(kept(), QStringList({"MiraboViewer.conf.kept-1"}));
}
