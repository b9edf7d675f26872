#include "StoreSupport.h"

#include "mirabo/core/RecentFiles.h"
#include "mirabo/preferences/SettingKeys.h"
#include "mirabo/preferences/Settings.h"
#include "support/ErrorGuard.h"

#include <limits>

using namespace mirabo;

namespace {

class StoredValuesTest : public StoreTest {
protected:
    static QVariant read(const QString& key, SettingKey::Kind kind)
    {
        switch (kind) {
        case SettingKey::Flag:
            return readBool(key, kFallbackFlag);
        case SettingKey::Number:
            return readInt(key, kFallbackNumber);
        case SettingKey::Text:
            return readText(key, kFallbackText);
        case SettingKey::Texts:
            return readTexts(key);
        }
        return {};
    }

    static void expectWithinLimits(const SettingKey& key, const QString& name)
    {
        const QVariant value = read(name, key.kind);
        if (key.kind == SettingKey::Number && value != kFallbackNumber) {
            EXPECT_GE(value.toInt(), key.least);
            EXPECT_LE(value.toInt(), key.most);
        } else if (key.kind == SettingKey::Text && value != kFallbackText) {
            EXPECT_GE(value.toString().size(), key.least);
            EXPECT_LE(value.toString().size(), key.most);
        } else if (key.kind == SettingKey::Texts) {
            EXPECT_LE(value.toStringList().size(), key.most);
        }
    }

    static constexpr bool kFallbackFlag = true;
    static constexpr int kFallbackNumber = std::numeric_limits<int>::min() + 5;
    static constexpr char kFallbackText[] = "fallback";
};

/// As QSettings writes them into a file, and as people do.
const char* const kDamaged[] = {"",
                                "perhaps",
                                "12.5",
                                "0x10",
                                "1e3",
                                "-",
                                "2147483648",
                                "99999999999999999999999",
                                "-99999999999999999999999",
                                "one, two, three",
                                "\"quoted",
                                "@Invalid()",
                                "@Variant(\\0\\0\\0\\t\\xff\\xff\\xff\\xff)",
                                "@Rect(1 2 3 4)",
                                "@ByteArray(12)",
                                "\\xfffe\\0"};

QString sampleName(const SettingKey& key)
{
    return QString(key.name).replace('*', "7");
}

} // namespace

/// A file as earlier versions write it, and in the place where they look for it.
TEST_F(StoredValuesTest, AreReadFromAStoreOfAnEarlierVersion)
{
    put("[AddDialog]\n"
        "LastType=Cone\n\n"
        "[FieldWatchPreferences]\n"
        "FieldWatchHeight=120\n"
        "ListColumnWidth\\0=150\n"
        "ListColumnWidth\\2=0\n\n"
        "[MiraboViewer]\n"
        "MiraboMainFrame\\File1=/scenes/a b.ky\n"
        "MiraboMainFrame\\File2=\n"
        "MiraboMainFrame\\File3=\"/scenes/c,d.ky\"\n"
        "MiraboMainFrame\\WindowX=-12\n\n"
        "[NodeOverviewPreferences]\n"
        "ShowCatalogPart=true\n\n"
        "[TreeViewPreferences]\n"
        "HighlightSelectedNode=false\n"
        "Node\\Part%20Name\\blue=3\n"
        "Node\\Part%20Name\\bold=true\n"
        "Node\\Part%20Name\\family=Courier\n"
        "Node\\Part%20Name\\green=2\n"
        "Node\\Part%20Name\\italic=false\n"
        "Node\\Part%20Name\\red=1\n"
        "Node\\Part%20Name\\show=false\n"
        "Node\\Part%20Name\\size=17\n"
        "Node\\Part%20Name\\underline=true\n");
    StyleTable styles = defaultTreeStyles();
    readStyles(kTreeGroup, styles);
    const TextStyle& name = styles["Node/Part Name"];
    EXPECT_EQ(name.font.family(), "Courier");
    EXPECT_EQ(name.font.pointSize(), 17);
    EXPECT_EQ(name.font.weight(), 75);
    EXPECT_TRUE(name.font.underline());
    EXPECT_FALSE(name.font.italic() || name.show);
    EXPECT_EQ(name.color, QColor(1, 2, 3));
    EXPECT_FALSE(readHighlightSelectedNode());
    EXPECT_TRUE(readShowCatalogPart());
    EXPECT_EQ(readFieldWatchHeight(), 120);
    EXPECT_EQ(readListColumnWidth(kFieldWatchGroup, 0), 150);
    EXPECT_EQ(readListColumnWidth(kFieldWatchGroup, 1), 20);
    EXPECT_EQ(readListColumnWidth(kFieldWatchGroup, 2), 0);
    EXPECT_EQ(readListColumnWidth(kFieldWatchGroup, 5), -1);
    EXPECT_EQ(readInt("/MiraboViewer/MiraboMainFrame/WindowX"), -12);
    EXPECT_EQ(readText("/AddDialog/LastType"), "Cone");
    RecentFiles recent;
    recent.read();
    EXPECT_EQ(recent.paths(), QStringList({"/scenes/a b.ky", "/scenes/c,d.ky"}));

    // An earlier version finds all of it again in what this one writes.
    applyStyles(kNodeOverviewGroup, 9);
    writeListColumnWidth(kFieldWatchGroup, 0, 151);
    releaseSettings();
    EXPECT_EQ(valueOnDisk("/TreeViewPreferences/Node/Part Name/size"), "17");
    EXPECT_EQ(valueOnDisk("/TreeViewPreferences//HighlightSelectedNode"), "false");
    EXPECT_EQ(valueOnDisk("/NodeOverviewPreferences/Changed Value/red"), "9");
    EXPECT_EQ(valueOnDisk("/NodeOverviewPreferences/Changed Value/bold"), "false");
    EXPECT_EQ(valueOnDisk("/FieldWatchPreferences//ListColumnWidth/0"), "151");
    EXPECT_EQ(valueOnDisk("/MiraboViewer/MiraboMainFrame/File3"), "/scenes/c,d.ky");
    EXPECT_TRUE(kept().isEmpty());
}

TEST_F(StoredValuesTest, CountAsTheDefaultOrTheNearestLimitWhenDamaged)
{
    for (const char* damaged : kDamaged) {
        SCOPED_TRACE(damaged);
        QByteArray text;
        for (const SettingKey& key : settingKeys())
            if (!key.name.startsWith("Store"))
                text += "[" + sampleName(key).section('/', 0, 0).toUtf8() + "]\n"
                        + sampleName(key).section('/', 1).replace('/', '\\').toUtf8() + "="
                        + damaged + "\n";
        // Once as this version has stored it, once as a store that is brought up to date.
        for (const char* version : {"[Store]\nVersion=1\n", ""}) {
            put(text + version);
            for (const SettingKey& key : settingKeys()) {
                SCOPED_TRACE(key.name.toStdString());
                expectWithinLimits(key, sampleName(key));
            }
        }
    }
    EXPECT_TRUE(kept().isEmpty());
}

TEST_F(StoredValuesTest, AreBroughtToTheNearestLimit)
{
    const QString key = QString(kTreeGroup) + "Node Type";
    put("[TreeViewPreferences]\n"
        "Node%20Type\\size=1000000\nNode%20Type\\red=256\nNode%20Type\\green=-1\n"
        "Node%20Type\\blue=99999999999999999999\nNode%20Type\\bold=maybe\n"
        "Node%20Type\\family=\nNode%20Type\\show=1\n"
        "[NodeOverviewPreferences]\nShowCatalogPart=perhaps\n"
        "ListColumnWidth\\0=1000000\nListColumnWidth\\1=-50\nListColumnWidth\\2=wide\n"
        "[FieldWatchPreferences]\nFieldWatchHeight=-7\n"
        "[Store]\nVersion=1\n");
    StyleTable styles = defaultTreeStyles();
    readStyles(kTreeGroup, styles);
    const TextStyle& style = styles["Node Type"];
    EXPECT_EQ(style.font.pointSize(), kMostPointSize);
    EXPECT_EQ(style.color, QColor(255, 0, 255));
    EXPECT_FALSE(style.font.bold());
    EXPECT_EQ(style.font.family(), defaultTreeStyles()["Node Type"].font.family());
    EXPECT_TRUE(style.show);
    EXPECT_FALSE(readShowCatalogPart());
    EXPECT_EQ(readListColumnWidth(kNodeOverviewGroup, 0), kMostPixels);
    EXPECT_EQ(readListColumnWidth(kNodeOverviewGroup, 1), -1);
    EXPECT_EQ(readListColumnWidth(kNodeOverviewGroup, 2), 0);
    EXPECT_FALSE(hasListColumnWidth(kNodeOverviewGroup, 2));
    EXPECT_EQ(readFieldWatchHeight(), 0);
    bool present = false;
    EXPECT_EQ(readInt(key + "/size", 8, &present), kMostPointSize);
    EXPECT_TRUE(present);

    put("[TreeViewPreferences]\nNode%20Type\\size=1\n");
    styles = defaultTreeStyles();
    readStyles(kTreeGroup, styles);
    EXPECT_EQ(styles["Node Type"].font.pointSize(), kLeastPointSize);
    // No point size: what a font that is measured in pixels was stored with.
    for (const char* none : {"0", "-1"}) {
        put(QByteArray("[TreeViewPreferences]\nNode%20Type\\size=") + none + "\n");
        styles = defaultTreeStyles();
        readStyles(kTreeGroup, styles);
        EXPECT_EQ(styles["Node Type"].font.pointSize(),
                  defaultTreeStyles()["Node Type"].font.pointSize());
    }
}

TEST_F(StoredValuesTest, HaveALengthThatTheirReadersCanBear)
{
    const QByteArray huge(10'000'000, 'x');
    QByteArray files;
    for (int i = 1; i <= 5000; ++i)
        files +=
            "MiraboMainFrame\\File" + QByteArray::number(i) + "=/f" + QByteArray::number(i) + "\n";
    put("[TreeViewPreferences]\nNode%20Type\\family=" + huge + "\n[AddDialog]\nLastType=" + huge
        + "\n[MiraboViewer]\n" + files + "MiraboMainFrame\\File2=" + huge + "\n");
    StyleTable styles = defaultTreeStyles();
    readStyles(kTreeGroup, styles);
    EXPECT_EQ(styles["Node Type"].font.family(), defaultTreeStyles()["Node Type"].font.family());
    EXPECT_EQ(readText("/AddDialog/LastType"), "");
    RecentFiles recent;
    recent.read();
    EXPECT_EQ(recent.paths().join(""), "/f1/f3/f4/f5/f6/f7/f8/f9");
    releaseSettings();
    EXPECT_LT(bytes().size(), huge.size()); // what nobody can use has left the store
}

TEST_F(StoredValuesTest, AreWrittenWithinTheirLimitsAndUnderDeclaredKeysOnly)
{
    writeListColumnWidth(kFieldWatchGroup, 1, -9);
    writeSetting("/TreeViewPreferences/Node Type/size", 5000);
    writeSetting("/AddDialog/LastType", QString(1000, 'x'));
    writeSetting("/NodeOverviewPreferences/ShowCatalogPart", "perhaps");
    EXPECT_EQ(readListColumnWidth(kFieldWatchGroup, 1), -1);
    EXPECT_EQ(readInt("/TreeViewPreferences/Node Type/size"), kMostPointSize);
    EXPECT_FALSE(isSettingStored("/AddDialog/LastType"));
    EXPECT_FALSE(isSettingStored("/NodeOverviewPreferences/ShowCatalogPart"));
    const auto errors = support::expectErrors();
    writeSetting("/TreeViewPreferences/NobodyKnows", 1);
    EXPECT_TRUE(errors.contains("declared"));
    EXPECT_FALSE(settings().contains("/TreeViewPreferences/NobodyKnows"));
}
