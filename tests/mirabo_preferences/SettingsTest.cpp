#include "mirabo/preferences/Settings.h"
#include "mirabo/preferences/TextStyle.h"

#include <QGuiApplication>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace mirabo;

namespace {

/// A store of its own, empty at first.
class SettingsTest : public ::testing::Test {
protected:
    SettingsTest()
    {
        releaseSettings();
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_folder.path());
    }
    ~SettingsTest() override { releaseSettings(); }

    /// Writes the store and opens it again, as the next process does.
    static void restart() { releaseSettings(); }

    QTemporaryDir m_folder;
};

void expectStyle(const StyleTable& table, const char* element, const QColor& color, bool italic)
{
    const TextStyle& style = table[element];
    const QFont application = QGuiApplication::font();
    EXPECT_EQ(style.color, color) << element;
    EXPECT_EQ(style.font.italic(), italic) << element;
    EXPECT_EQ(style.font.pointSize(), application.pointSize()) << element;
    EXPECT_EQ(style.font.weight(), application.weight()) << element;
    EXPECT_TRUE(style.show) << element;
}

QStringList elements(const StyleTable& table)
{
    QStringList names;
    for (const auto& [name, style] : table.entries())
        names << name;
    return names;
}

} // namespace

TEST_F(SettingsTest, GivesTheDefaultsFromAFreshStore)
{
    EXPECT_EQ(settings().organizationName(), "Mirabo");
    EXPECT_EQ(settings().applicationName(), "MiraboViewer");
    EXPECT_TRUE(settings().allKeys().isEmpty());
    StyleTable fields = defaultFieldStyles();
    EXPECT_EQ(elements(fields), QStringList({"Default Value", "Changed Value"}));
    readStyles(kNodeOverviewGroup, fields);
    expectStyle(fields, "Default Value", Qt::black, false);
    expectStyle(fields, "Changed Value", Qt::red, false);

    StyleTable tree = defaultTreeStyles();
    EXPECT_EQ(elements(tree),
              QStringList({"Node Type", "Node/Part Name", "Reference Count", "Node From Field"}));
    readStyles(kTreeGroup, tree);
    expectStyle(tree, "Node Type", Qt::black, false);
    expectStyle(tree, "Node/Part Name", Qt::darkGreen, true);
    expectStyle(tree, "Reference Count", Qt::blue, false);
    expectStyle(tree, "Node From Field", Qt::black, false);
    EXPECT_EQ(tree["Node From Field"].font.family(), "Times New Roman");
    EXPECT_EQ(tree["Node Type"].font.family(), QGuiApplication::font().family());

    EXPECT_TRUE(readHighlightSelectedNode());
    EXPECT_FALSE(readRealNodekitsCounter());
    EXPECT_FALSE(readRealVrmlCounter());
    EXPECT_FALSE(readShowCatalogPart());
    EXPECT_EQ(readFieldWatchHeight(), 0);
    for (const char* group : {kNodeOverviewGroup, kFieldWatchGroup}) {
        const int widths[] = {20, 20, 0, 0, -1, -1, -1, -1};
        for (int i = 0; i < 8; ++i) {
            EXPECT_EQ(readListColumnWidth(group, i), widths[i]) << i;
            EXPECT_FALSE(hasListColumnWidth(group, i));
        }
    }
    EXPECT_TRUE(settings().allKeys().isEmpty()); // reading writes nothing
}

TEST_F(SettingsTest, WritesEveryKeyOfAStyleAndReadsItBack)
{
    StyleTable tree = defaultTreeStyles();
    TextStyle style = tree["Reference Count"];
    style.font = QFont("Courier", 17, QFont::Black, true);
    style.font.setUnderline(true);
    style.color = QColor(1, 2, 255);
    style.show = false;
    tree.set("Reference Count", style);
    writeStyles(kTreeGroup, tree);
    EXPECT_EQ(settings().allKeys().size(), 4 * 9 + 1); // and the version
    const QString key = QString(kTreeGroup) + "Reference Count";
    EXPECT_EQ(settings().value(key + "/blue").toInt(), 255);
    restart();

    StyleTable read = defaultTreeStyles();
    readStyles(kTreeGroup, read);
    const TextStyle& back = read["Reference Count"];
    EXPECT_EQ(back.font.family(), "Courier");
    EXPECT_EQ(back.font.pointSize(), 17);
    EXPECT_EQ(back.font.weight(), 75); // bold or not is all that is kept
    EXPECT_TRUE(back.font.italic() && back.font.underline());
    EXPECT_EQ(back.color, QColor(1, 2, 255));
    EXPECT_FALSE(back.show);
    EXPECT_TRUE(read["Node Type"].show);

    // Field lists keep eight keys an element: they show all of theirs.
    StyleTable fields = defaultFieldStyles();
    writeStyles(kFieldWatchGroup, fields);
    EXPECT_EQ(settings().allKeys().size(), 4 * 9 + 2 * 8 + 1);
    EXPECT_FALSE(settings().contains(QString(kFieldWatchGroup) + "Default Value/show"));
}

TEST_F(SettingsTest, TellsWhetherStylesNeedBeWritten)
{
    const StyleTable defaults = defaultTreeStyles();
    EXPECT_FALSE(areStylesStored(kTreeGroup, defaults));
    writeStyles(kTreeGroup, defaults);
    EXPECT_TRUE(areStylesStored(kTreeGroup, defaults));
    restart();
    StyleTable read = defaultTreeStyles();
    readStyles(kTreeGroup, read);
    EXPECT_TRUE(haveSameSettings(read, defaults));
    EXPECT_FALSE(haveSameSettings(defaultFieldStyles(), defaults));
    const std::function<void(TextStyle&)> changes[] = {
        [](TextStyle& style) { style.font.setFamily("Courier"); },
        [](TextStyle& style) { style.font.setPointSize(33); },
        [](TextStyle& style) { style.font.setBold(true); },
        [](TextStyle& style) { style.font.setItalic(true); },
        [](TextStyle& style) { style.font.setUnderline(true); },
        [](TextStyle& style) { style.color = QColor(1, 2, 3); },
        [](TextStyle& style) { style.show = false; }};
    for (const auto& change : changes) {
        StyleTable changed = defaults;
        TextStyle style = changed["Node Type"];
        change(style);
        changed.set("Node Type", style);
        EXPECT_FALSE(haveSameSettings(changed, defaults));
        writeStyles(kTreeGroup, changed);
        restart();
        StyleTable back = defaultTreeStyles();
        readStyles(kTreeGroup, back);
        EXPECT_TRUE(haveSameSettings(back, changed));
    }
}

TEST_F(SettingsTest, KeepsEveryChoiceOverARestart)
{
    writeHighlightSelectedNode(false);
    writeRealNodekitsCounter(true);
    writeRealVrmlCounter(true);
    writeShowCatalogPart(true);
    writeFieldWatchHeight(120);
    writeListColumnWidth(kFieldWatchGroup, 5, 77);
    restart();
    EXPECT_FALSE(readHighlightSelectedNode());
    EXPECT_TRUE(readRealNodekitsCounter());
    EXPECT_TRUE(readRealVrmlCounter());
    EXPECT_TRUE(readShowCatalogPart());
    EXPECT_EQ(readFieldWatchHeight(), 120);
    EXPECT_EQ(readListColumnWidth(kFieldWatchGroup, 5), 77);
    EXPECT_TRUE(hasListColumnWidth(kFieldWatchGroup, 5));
    EXPECT_EQ(readListColumnWidth(kNodeOverviewGroup, 5), -1);
    EXPECT_TRUE(settings().contains("/TreeViewPreferences/HighlightSelectedNode"));
    EXPECT_TRUE(settings().contains("/TreeViewPreferences/RealNodekitsCounter"));
    EXPECT_TRUE(settings().contains("/TreeViewPreferences/RealVRMLCounter"));
    EXPECT_TRUE(settings().contains("/NodeOverviewPreferences/ShowCatalogPart"));
    EXPECT_TRUE(settings().contains("/FieldWatchPreferences/ListColumnWidth/5"));
}

TEST_F(SettingsTest, SurvivesAStoreThatSomebodyEdited)
{
    const QString key = QString(kNodeOverviewGroup) + "Changed Value";
    settings().setValue(key + "/red", 999);
    settings().setValue(key + "/green", "much");
    settings().setValue(key + "/size", -3);
    settings().setValue(QString(kNodeOverviewGroup) + "/ListColumnWidth/0", "wide");
    StyleTable styles = defaultFieldStyles();
    readStyles(kNodeOverviewGroup, styles);
    EXPECT_EQ(styles["Changed Value"].color, QColor(Qt::red));
    EXPECT_GT(styles["Changed Value"].font.pointSize() + styles["Changed Value"].font.pixelSize(),
              0);
    EXPECT_EQ(readListColumnWidth(kNodeOverviewGroup, 0), 20);
    bool present = true;
    EXPECT_EQ(readInt("/nobody", 7, &present), 7);
    EXPECT_FALSE(present);
    EXPECT_EQ(readText("/nobody", "text", &present), "text");
    EXPECT_EQ(StyleTable()["nothing"].show, true);
}

// Every colour of the delegates, and the defaults above all.
TEST(TextColors, AreReadableOnDarkDesktopsAndStayOnLightOnes)
{
    for (const QColor& base : {QColor(0, 0, 0), QColor(30, 30, 30), QColor(49, 54, 59)}) {
        for (int hue = -1; hue < 360; hue += 15)
            for (const int lightness : {0, 60, 128, 200}) {
                const QColor color = QColor::fromHsl(hue, hue < 0 ? 0 : 255, lightness);
                EXPECT_GE(mirabo::contrastOf(base, mirabo::readableOn(base, color)), 4.5)
                    << base.name().toStdString() << " " << color.name().toStdString();
            }
        EXPECT_EQ(mirabo::readableOn(base, QColor(240, 240, 240)), QColor(240, 240, 240));
    }
    EXPECT_EQ(mirabo::readableOn(Qt::white, Qt::blue), QColor(Qt::blue));
    EXPECT_NEAR(mirabo::contrastOf(Qt::black, Qt::white), 21, 1e-6);
}
