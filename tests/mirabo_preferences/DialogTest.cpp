#include "PageSupport.h"

#include "mirabo/preferences/SoMiraboPreferences.h"
#include "mirabo/preferences/SoNodeOverviewPreferences.h"
#include "mirabo/preferences/SoTreeViewPreferences.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTest>

namespace {

class Dialog : public PageTest {
protected:
    void addPages()
    {
        tree = new SoTreeViewPreferences(&dialog);
        overview = new SoNodeOverviewPreferences(&dialog);
        dialog.addPage(tree->asPage("Tree View"));
        dialog.addPage({"Nothing", nullptr, [] {}, [] {}});
        dialog.addPage(overview->asPage("Node Overview"));
        dialog.show();
        QApplication::setActiveWindow(&dialog);
        EXPECT_TRUE(support::passUntilExposed(&dialog));
    }
    void click(const char* button) { control<QPushButton>(dialog, button).click(); }
    QCheckBox& box(const char* name) { return control<QCheckBox>(dialog, name); }
    QListWidget& list() { return control<QListWidget>(dialog, "m_preferenceList"); }
    QWidget* shown() { return control<QStackedWidget>(dialog, "m_widgetStack").currentWidget(); }
    void search(const char* text) { control<QLineEdit>(dialog, "m_searchEdit").setText(text); }
    QStringList listed()
    {
        QStringList names;
        for (int row = 0; row < list().count(); ++row)
            if (!list().isRowHidden(row))
                names << list().item(row)->text();
        return names;
    }
    /// Whether something lies over a control that was not there at first.
    static bool isMarked(const QWidget& control)
    {
        return !control.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly).isEmpty();
    }

    SoMiraboPreferences dialog;
    SoTreeViewPreferences* tree = nullptr;
    SoNodeOverviewPreferences* overview = nullptr;
};

} // namespace

TEST_F(Dialog, ShowsThePageThatIsCurrentInTheList)
{
    addPages();
    EXPECT_EQ(dialog.getPageCount(), 2);
    EXPECT_EQ(list().currentRow(), 0);
    EXPECT_EQ(shown(), tree);
    list().setCurrentRow(1);
    EXPECT_EQ(shown(), overview);
    list().setCurrentRow(0);
    delete tree; // its extension ends
    EXPECT_EQ(listed(), QStringList("Node Overview"));
    EXPECT_EQ(shown(), overview);
    const QPointer<QWidget> last = overview;
    delete overview;
    EXPECT_EQ(dialog.getPageCount(), 0);
    click("m_applyButton");
}

TEST_F(Dialog, AppliesAndStaysOpenAndCancelUndoesNothing)
{
    addPages();
    const QSignalSpy saved(&dialog, &SoMiraboPreferences::saved);
    box("m_checkVRML").click();
    QTest::keyClick(&dialog, Qt::Key_A, Qt::AltModifier);
    // A button that its shortcut has pressed is let go of by a timer.
    ASSERT_TRUE(support::passUntil([&saved] { return saved.count() > 0; }));
    EXPECT_TRUE(mirabo::readRealVrmlCounter());
    EXPECT_EQ(saved.count(), 1);
    EXPECT_TRUE(dialog.isVisible());
    box("m_checkBaseKit").click();
    click("m_cancelButton");
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
    EXPECT_TRUE(mirabo::readRealVrmlCounter());
    EXPECT_FALSE(mirabo::readRealNodekitsCounter());
    dialog.show();
    Q_EMIT dialog.emitInit();
    EXPECT_TRUE(box("m_checkVRML").isChecked());
    EXPECT_FALSE(box("m_checkBaseKit").isChecked()) << "loaded anew";
    box("m_checkPart").click();
    click("m_okButton");
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_TRUE(mirabo::readShowCatalogPart());
}

TEST_F(Dialog, WritesNothingWhenCancelled)
{
    addPages();
    for (auto* button : dialog.findChildren<QCheckBox*>())
        button->click();
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_TRUE(mirabo::settings().allKeys().isEmpty());
}

TEST_F(Dialog, FindsPagesByTheirNamesAndTexts)
{
    addPages();
    const QStringList all{"Tree View", "Node Overview"};
    search("CATALOG");
    EXPECT_EQ(listed(), QStringList("Node Overview"));
    EXPECT_EQ(shown(), overview);
    EXPECT_TRUE(isMarked(box("m_checkPart")));
    search("kit real"); // the words in any order
    EXPECT_EQ(listed(), QStringList("Tree View"));
    EXPECT_TRUE(isMarked(box("m_checkBaseKit")));
    EXPECT_TRUE(isMarked(box("m_checkVRML"))) << "one of the words";
    EXPECT_FALSE(isMarked(box("m_checkSelectedNode")));
    search("underline"); // the shortcut's mark stands within it
    EXPECT_EQ(listed(), all);
    search("changed value"); // in a list
    EXPECT_EQ(listed(), QStringList("Node Overview"));
    search("Overview");
    EXPECT_EQ(listed(), QStringList("Node Overview"));
    search("nowhere");
    EXPECT_EQ(listed(), QStringList());
    EXPECT_TRUE(control<QLabel>(dialog, "m_searchHint").isVisible());

    QLineEdit& edit = control<QLineEdit>(dialog, "m_searchEdit");
    QTest::keyClick(&edit, Qt::Key_Escape);
    EXPECT_TRUE(dialog.isVisible()) << "ends the search first";
    EXPECT_EQ(listed(), all);
    EXPECT_FALSE(control<QLabel>(dialog, "m_searchHint").isVisible());
    EXPECT_FALSE(isMarked(box("m_checkPart")));
    EXPECT_FALSE(isMarked(box("m_checkBaseKit")));
    edit.setText("catalog");
    QTest::keyClick(&edit, Qt::Key_Return);
    EXPECT_TRUE(dialog.isVisible()) << "Return is the search's";
    EXPECT_TRUE(mirabo::settings().allKeys().isEmpty());
}
