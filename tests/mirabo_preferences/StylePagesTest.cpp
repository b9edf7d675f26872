#include "PageSupport.h"

#include "mirabo/preferences/SoFieldWatchPreferences.h"
#include "mirabo/preferences/SoNodeOverviewPreferences.h"
#include "mirabo/preferences/SoTreeViewPreferences.h"

#include <QCheckBox>
#include <QFontComboBox>
#include <QGuiApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>

using mirabo::TextStyle;

namespace {

class StylePages : public PageTest {
protected:
    static void select(const QWidget& page, const char* element)
    {
        auto& list = control<QListWidget>(page, "m_listItems");
        list.setCurrentItem(list.findItems(element, Qt::MatchExactly).value(0));
        ASSERT_NE(list.currentItem(), nullptr);
    }
    static void click(const QWidget& page, const char* button)
    {
        control<QAbstractButton>(page, button).click();
    }
    static const QLineEdit& preview(const QWidget& page)
    {
        return control<QLineEdit>(page, "m_editPreview");
    }
    static QColor previewColor(const QWidget& page)
    {
        return preview(page).palette().color(QPalette::Active, QPalette::Text);
    }
    /// An installed family that is not the one given.
    static QString otherFamily(const QFontComboBox& families)
    {
        for (int i = 0; i < families.count(); ++i)
            if (families.itemText(i) != families.currentText())
                return families.itemText(i);
        return QString();
    }
};

/// A page and an element of it, under the group in which its styles are stored.
struct Where {
    const char* name;
    std::unique_ptr<SoStylePreferences> (*make)();
    const char* group;
    const char* element;
};

template <class Page>
std::unique_ptr<SoStylePreferences> make()
{
    return std::make_unique<Page>();
}

class EveryStylePage : public StylePages, public testing::WithParamInterface<Where> {
protected:
    TextStyle read() const
    {
        mirabo::StyleTable styles = QString(GetParam().group) == mirabo::kTreeGroup
                                        ? mirabo::defaultTreeStyles()
                                        : mirabo::defaultFieldStyles();
        mirabo::readStyles(GetParam().group, styles);
        return styles[GetParam().element];
    }
};

INSTANTIATE_TEST_SUITE_P(Pages, EveryStylePage,
                         testing::Values(Where{"Tree", &make<SoTreeViewPreferences>,
                                               mirabo::kTreeGroup, "Reference Count"},
                                         Where{"Overview", &make<SoNodeOverviewPreferences>,
                                               mirabo::kNodeOverviewGroup, "Changed Value"},
                                         Where{"Watch", &make<SoFieldWatchPreferences>,
                                               mirabo::kFieldWatchGroup, "Default Value"}),
                         [](const auto& info) { return info.param.name; });

TEST_P(EveryStylePage, EditsACopyAndWritesItWhenSaved)
{
    const auto page = GetParam().make();
    const QSignalSpy saved(page.get(), &SoStylePreferences::saved);
    select(*page, GetParam().element);
    auto& families = control<QFontComboBox>(*page, "m_comboFamily");
    const QString family = otherFamily(families);
    if (!family.isEmpty())
        families.setCurrentText(family);
    control<QSpinBox>(*page, "m_spinSize").setValue(21);
    click(*page, "m_checkBold");
    click(*page, "m_checkItalic");
    click(*page, "m_checkUnderline");
    click(*page, "m_buttonColor");
    chooseColor(*page, QColor(120, 60, 200));

    EXPECT_EQ(preview(*page).text(), "Some Text");
    EXPECT_EQ(preview(*page).font().pointSize(), 21);
    EXPECT_EQ(preview(*page).font().weight(), 75);
    EXPECT_EQ(previewColor(*page), QColor(120, 60, 200));
    EXPECT_TRUE(mirabo::settings().allKeys().isEmpty()) << "nothing is written before";
    EXPECT_EQ(saved.count(), 0);

    page->save();
    EXPECT_EQ(saved.count(), 1);
    mirabo::releaseSettings(); // as the next process reads it
    const TextStyle style = read();
    EXPECT_EQ(style.font.pointSize(), 21);
    EXPECT_TRUE(style.font.bold());
    EXPECT_TRUE(style.font.italic());
    EXPECT_TRUE(style.font.underline());
    EXPECT_EQ(style.color, QColor(120, 60, 200));
    if (!family.isEmpty()) {
        EXPECT_EQ(style.font.family(), family);
    }
    const auto again = GetParam().make();
    select(*again, GetParam().element);
    EXPECT_EQ(control<QSpinBox>(*again, "m_spinSize").value(), 21);
    EXPECT_TRUE(control<QCheckBox>(*again, "m_checkUnderline").isChecked());
}

TEST_P(EveryStylePage, LooksAtElementsWithoutChangingThem)
{
    const QString family = "A family that nobody has";
    mirabo::settings().setValue(QString(GetParam().group) + GetParam().element + "/family", family);
    const auto page = GetParam().make();
    auto& list = control<QListWidget>(*page, "m_listItems");
    EXPECT_EQ(list.currentRow(), 0);
    for (int row = list.count() - 1; row >= 0; --row)
        list.setCurrentRow(row);
    select(*page, GetParam().element);
    auto& families = control<QFontComboBox>(*page, "m_comboFamily");
    EXPECT_EQ(families.currentText(), family);
    families.setEditText("no font, either");
    page->save();
    EXPECT_EQ(read().font.family(), family);
}

TEST_P(EveryStylePage, ForgetsWhatWasNotSaved)
{
    const auto page = GetParam().make();
    select(*page, GetParam().element);
    click(*page, "m_checkBold");
    page->load();
    EXPECT_EQ(control<QListWidget>(*page, "m_listItems").currentRow(), 0);
    select(*page, GetParam().element);
    EXPECT_FALSE(control<QCheckBox>(*page, "m_checkBold").isChecked());
    EXPECT_EQ(preview(*page).font().weight(), 50);
}

TEST_P(EveryStylePage, EndsWhileAColorIsChosen)
{
    auto page = GetParam().make();
    select(*page, GetParam().element);
    page->show();
    click(*page, "m_buttonColor");
    click(*page, "m_buttonColor");
    EXPECT_EQ(page->findChildren<QColorDialog*>().size(), 1);
    colorDialog(*page)->reject();
    support::flush();
    EXPECT_EQ(previewColor(*page), mirabo::shownColor(read().color, QGuiApplication::palette()))
        << "nothing was chosen";
    click(*page, "m_buttonColor");
    const QPointer<QColorDialog> open = colorDialog(*page);
    ASSERT_TRUE(open && open->isVisible());
    page.reset();
    EXPECT_FALSE(open);
}

} // namespace

TEST_F(StylePages, SetTheNameOfANodeToItalicDarkGreen)
{
    mirabo::StyleTable styles = mirabo::defaultTreeStyles();
    for (auto& [element, style] : styles.entries()) {
        style = {QFont("Courier", 33, QFont::Bold), Qt::magenta, false};
        style.font.setUnderline(true);
    }
    mirabo::writeStyles(mirabo::kTreeGroup, styles);
    SoTreeViewPreferences page;
    select(page, "Node/Part Name");
    EXPECT_FALSE(control<QCheckBox>(page, "m_checkShow").isChecked());
    EXPECT_EQ(preview(page).font().pointSize(), 33);
    click(page, "m_pushToDefault");
    EXPECT_TRUE(control<QCheckBox>(page, "m_checkItalic").isChecked());
    EXPECT_FALSE(control<QCheckBox>(page, "m_checkBold").isChecked());
    EXPECT_FALSE(control<QCheckBox>(page, "m_checkUnderline").isChecked());
    EXPECT_TRUE(control<QCheckBox>(page, "m_checkShow").isChecked());
    EXPECT_EQ(control<QFontComboBox>(page, "m_comboFamily").currentText(),
              QGuiApplication::font().family());
    EXPECT_EQ(preview(page).font().pointSize(), QGuiApplication::font().pointSize());
    EXPECT_EQ(previewColor(page), QColor(Qt::darkGreen));
    page.save();
    mirabo::readStyles(mirabo::kTreeGroup, styles);
    EXPECT_EQ(styles["Node/Part Name"].color, QColor(Qt::darkGreen));
    EXPECT_TRUE(styles["Node/Part Name"].font.italic());
    EXPECT_EQ(styles["Node Type"].font.pointSize(), 33) << "only the one that was selected";
}

TEST_F(StylePages, PreviewTheColorOfTheRows)
{
    const QPalette light = QGuiApplication::palette();
    QPalette dark = light;
    dark.setColor(QPalette::Base, QColor(30, 30, 30));
    dark.setColor(QPalette::Text, QColor(240, 240, 240));
    SoTreeViewPreferences page;
    select(page, "Node Type");
    EXPECT_EQ(previewColor(page), light.color(QPalette::Text));
    QGuiApplication::setPalette(dark);
    support::flush();
    EXPECT_EQ(previewColor(page), QColor(240, 240, 240)) << "black follows the desktop";
    select(page, "Reference Count");
    EXPECT_GT(previewColor(page).lightness(), QColor(Qt::blue).lightness());
    EXPECT_EQ(previewColor(page).hslHue(), QColor(Qt::blue).hslHue());
    QGuiApplication::setPalette(light);
    support::flush();
    EXPECT_EQ(previewColor(page), QColor(Qt::blue));
}

TEST_F(StylePages, WriteTheirSwitches)
{
    SoTreeViewPreferences tree;
    select(tree, "Node From Field");
    for (const char* box : {"m_checkShow", "m_checkSelectedNode", "m_checkBaseKit", "m_checkVRML"})
        click(tree, box);
    SoNodeOverviewPreferences overview;
    click(overview, "m_checkPart");
    EXPECT_TRUE(mirabo::settings().allKeys().isEmpty());
    tree.save();
    overview.save();
    mirabo::releaseSettings();
    EXPECT_EQ(stored("/TreeViewPreferences/Node From Field/show"), "false");
    EXPECT_EQ(stored("/TreeViewPreferences/Node Type/show"), "true");
    EXPECT_FALSE(mirabo::readHighlightSelectedNode());
    EXPECT_TRUE(mirabo::readRealNodekitsCounter());
    EXPECT_TRUE(mirabo::readRealVrmlCounter());
    EXPECT_TRUE(mirabo::readShowCatalogPart());
    SoTreeViewPreferences again;
    EXPECT_FALSE(control<QCheckBox>(again, "m_checkSelectedNode").isChecked());
    EXPECT_TRUE(control<QCheckBox>(again, "m_checkBaseKit").isChecked());
    EXPECT_TRUE(control<QCheckBox>(again, "m_checkVRML").isChecked());
}
