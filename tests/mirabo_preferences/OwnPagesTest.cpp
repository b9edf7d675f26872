#include "mirabo/core/MainActions.h"
#include "mirabo/preferences/GeneralPage.h"
#include "mirabo/preferences/OutlinePage.h"
#include "mirabo/preferences/Settings.h"
#include "mirabo/preferences/ShortcutsPage.h"
#include "mirabo/tree/HelpAddress.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

#include <gtest/gtest.h>

namespace {

using mirabo::ShortcutEntry;

/// The pages beyond those of the panels.
class OwnPages : public ::testing::Test {
protected:
    OwnPages()
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_folder.path());
        mirabo::releaseSettings();
    }
    ~OwnPages() override { mirabo::releaseSettings(); }

    QTemporaryDir m_folder;
};

class ShortcutsPageTest : public OwnPages {
protected:
    ShortcutsPageTest()
    {
        m_page.load();
        m_page.show();
    }
    void choose(int row, const char* keys)
    {
        m_rows->setCurrentItem(m_rows->topLevelItem(row));
        m_edit->setKeySequence(QKeySequence(keys));
        Q_EMIT m_edit->editingFinished();
    }
    QString shown(int row) const { return m_rows->topLevelItem(row)->text(1); }
    QString conflict() const { return m_page.findChild<QLabel*>("m_shortcutConflict")->text(); }

    const mirabo::ShortcutEntries m_entries{{"Find", "Find", QKeySequence("Ctrl+N")},
                                            {"New", "New", QKeySequence("Ctrl+N")},
                                            {"Explore", "Explore", {}}};
    int m_saved = 0;
    mirabo::ShortcutsPage m_page{m_entries, [this] { ++m_saved; }, nullptr};
    QTreeWidget* m_rows = m_page.findChild<QTreeWidget*>("m_shortcuts");
    QKeySequenceEdit* m_edit = m_page.findChild<QKeySequenceEdit*>("m_shortcutEdit");
};

TEST_F(ShortcutsPageTest, KeepsWhatTheUserChoseAndNothingElse)
{
    choose(2, "Alt+E");
    EXPECT_EQ(mirabo::readShortcut(m_entries[2]), QKeySequence()) << "not before it is saved";
    m_page.save();
    EXPECT_EQ(m_saved, 1);
    EXPECT_EQ(mirabo::readShortcut(m_entries[2]), QKeySequence("Alt+E"));
    EXPECT_FALSE(mirabo::settings().contains("/Shortcuts/Find"));

    choose(0, "");
    m_page.save();
    EXPECT_EQ(mirabo::readShortcut(m_entries[0]), QKeySequence()) << "none is a choice, too";
    m_page.findChild<QPushButton*>("m_shortcutsReset")->click();
    EXPECT_EQ(shown(0), QKeySequence("Ctrl+N").toString(QKeySequence::NativeText));
    m_page.save();
    EXPECT_EQ(mirabo::readShortcut(m_entries[0]), QKeySequence("Ctrl+N"));
    EXPECT_TRUE(mirabo::settings().allKeys().filter("Shortcuts").isEmpty());
}

TEST_F(ShortcutsPageTest, TellsOfConflictsOfTheUsersOwnChoices)
{
    m_rows->setCurrentItem(m_rows->topLevelItem(1));
    EXPECT_EQ(conflict(), "") << "the tool's own are as they are";
    choose(2, "Ctrl+N");
    EXPECT_TRUE(conflict().contains("\"Find\"") && conflict().contains("\"New\""))
        << conflict().toStdString();
    choose(2, "Ctrl+M");
    EXPECT_EQ(conflict(), "");
}

TEST_F(ShortcutsPageTest, TakesADamagedStoreForTheToolsOwn)
{
    mirabo::settings().setValue("/Shortcuts/Find", "no key at all");
    EXPECT_EQ(mirabo::readShortcut(m_entries[0]), QKeySequence("Ctrl+N"));
    mirabo::settings().setValue("/Shortcuts/Find", "");
    EXPECT_EQ(mirabo::readShortcut(m_entries[0]), QKeySequence("Ctrl+N"));
}

TEST_F(OwnPages, OutlineIsStoredWithinItsLimits)
{
    int saved = 0;
    mirabo::OutlinePage page([&saved] { ++saved; }, nullptr);
    page.load();
    page.show();
    EXPECT_EQ(page.findChild<QSpinBox*>("m_outlineWidth")->value(), 2);
    page.findChild<QPushButton*>("m_outlineColor")->click();
    auto* dialog = page.findChild<QColorDialog*>();
    ASSERT_TRUE(dialog);
    dialog->setCurrentColor(QColor(10, 20, 30));
    dialog->accept();
    page.findChild<QSpinBox*>("m_outlineWidth")->setValue(5);
    EXPECT_EQ(mirabo::readOutlineWidth(), 2);
    page.save();
    EXPECT_EQ(saved, 1);
    EXPECT_EQ(mirabo::readOutlineColor(), QColor(10, 20, 30));
    EXPECT_EQ(mirabo::readOutlineWidth(), 5);
    mirabo::settings().setValue("/Outline/Width", 1'000'000);
    EXPECT_EQ(mirabo::readOutlineWidth(), 16);
    mirabo::settings().setValue("/Outline/Color", "perhaps");
    EXPECT_EQ(mirabo::readOutlineColor(), QColor(0, 230, 255));
}

TEST_F(OwnPages, GeneralChoicesAreStored)
{
    mirabo::GeneralPage page(true, nullptr);
    page.load();
    auto* address = page.findChild<QLineEdit*>("m_documentationAddress");
    EXPECT_EQ(
        mirabo::helpAddress("Cube").toString().toStdString().rfind("https://docs.mirabo.dev/", 0),
        0U);
    address->setText("http://localhost:8000/mirabo/");
    page.findChild<QCheckBox*>("m_restoreWindow")->setChecked(false);
    page.findChild<QCheckBox*>("m_restoreFile")->setChecked(true);
    page.save();
    EXPECT_EQ(mirabo::helpAddress("Cube").toString(),
              "http://localhost:8000/mirabo/content/c-api?apiurl=http://localhost:8000/mirabo/"
              "APIS/RefManCpp/class_so_cube.html");
    EXPECT_FALSE(mirabo::readRestoreWindow());
    EXPECT_TRUE(mirabo::readRestoreBookmarks());
    EXPECT_TRUE(mirabo::readRestoreFile());
    address->setText("not an address");
    page.save();
    EXPECT_EQ(mirabo::readDocumentationAddress(), "https://docs.mirabo.dev");
}

/// Each action has a place of its own in the store.
TEST(ActionNames, AreDifferent)
{
    QStringList names;
    for (const mirabo::ActionSpec& spec : mirabo::actionTable())
        names << QString(spec.text).remove('&').remove('.').remove(' ');
    EXPECT_EQ(names.removeDuplicates(), 0);
}

} // namespace
