#include "LaunchSupport.h"
#include "support/DialogAnswers.h"
#include "support/Passes.h"

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/gui/SoSceneManager.h>
#include <kalmyr/nodes/SoSelection.h>
#include <mirabo/extender/MrbServices.h>
#include <mirabo/launch/SoMirabo.h>

#include <QAction>
#include <QCheckBox>
#include <QColorDialog>
#include <QImage>
#include <QKeySequenceEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTreeWidget>

#include <vector>

namespace {

using Answers = std::vector<support::DialogAnswers::Answer>;

/// The preferences of the whole tool: what is chosen there shows in its views.
class PreferencesTest : public LaunchTest {
protected:
    void TearDown() override
    {
        LaunchTest::TearDown();
        support::flush();
    }
    void open()
    {
        hooks().m_mirabo_startStandalone(0, nullptr);
        services()->setSceneGraph(scene.get());
        window()->resize(1400, 900);
        pass();
    }
    static MrbServices* services() { return MrbServices::getInstance(); }
    /// Opens the dialog; the answers are given to it, and to what they open.
    static void edit(Answers answers)
    {
        const auto expected = static_cast<int>(answers.size());
        support::DialogAnswers given(std::move(answers));
        action("&Preferences...")->trigger();
        EXPECT_EQ(given.count(), expected);
        support::flush();
    }
    template <class Control>
    static Control* part(const QWidget* parent, const char* name)
    {
        auto* found = parent->findChild<Control*>(name);
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    static void click(const QWidget* dialog, const char* button)
    {
        part<QAbstractButton>(dialog, button)->click();
    }
    /// Shows a page of the dialog, and there an element of its list.
    static QWidget* page(const QWidget* dialog, const char* name, const char* element = nullptr)
    {
        auto* list = part<QListWidget>(dialog, "m_preferenceList");
        list->setCurrentItem(list->findItems(name, Qt::MatchExactly).value(0));
        QWidget* shown = dialog->findChild<QStackedWidget*>("m_widgetStack")->currentWidget();
        if (element) {
            auto* elements = part<QListWidget>(shown, "m_listItems");
            elements->setCurrentItem(elements->findItems(element, Qt::MatchExactly).value(0));
        }
        return shown;
    }
    static bool shows(QWidget* widget, const QColor& color)
    {
        support::flush();
        const QImage image = widget->grab().toImage();
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixelColor(x, y) == color)
                    return true;
        return false;
    }
    static QTreeWidget* fields() { return window()->findChild<QTreeWidget*>("m_nodeOverviewList"); }
    static QTreeWidget* watch() { return window()->findChild<QTreeWidget*>("m_fieldWatch"); }
    static QTreeWidgetItem* nodeRow(const char* type)
    {
        return tree()->findItems(type, Qt::MatchExactly | Qt::MatchRecursive, 0).value(0);
    }
};

const QColor kColor(250, 130, 20); // of nothing else

} // namespace

TEST_F(PreferencesTest, ListsThePagesInTheirOrder)
{
    open();
    edit({[](QDialog* dialog) {
        EXPECT_EQ(dialog->windowTitle(), "Preferences");
        const auto* list = part<QListWidget>(dialog, "m_preferenceList");
        QStringList names;
        for (int row = 0; row < list->count(); ++row)
            names << list->item(row)->text();
        EXPECT_EQ(names.mid(0, 4),
                  QStringList({"Viewer", "Tree View", "Node Overview", "Field Watch"}));
        EXPECT_EQ(names.last(), "Extensions");
        dialog->reject();
    }});
}

TEST_F(PreferencesTest, LeavesTheViewerOutWhenTheHostDrawsNothing)
{
    hooks().m_mirabo_startNode(scene.get());
    edit({[](QDialog* dialog) {
        EXPECT_EQ(part<QListWidget>(dialog, "m_preferenceList")->item(0)->text(), "Tree View");
        dialog->reject();
    }});
}

TEST_F(PreferencesTest, ShowsANewStyleInTheTreeAtOnceAndLeavesItsStateAlone)
{
    open();
    tree()->expandAll();
    tree()->setCurrentItem(nodeRow("Sphere"));
    window()->resize(1400, 300);
    support::flush();
    tree()->verticalScrollBar()->setValue(tree()->verticalScrollBar()->maximum() / 2);
    const int position = tree()->verticalScrollBar()->value();
    const QTreeWidgetItem* top = tree()->itemAt(2, 2);
    const QTreeWidgetItem* first = tree()->topLevelItem(0);
    const int height = tree()->visualItemRect(top).height();
    EXPECT_FALSE(shows(tree(), kColor));
    edit({[&](QDialog* dialog) {
              const QWidget* styles = page(dialog, "Tree View", "Node Type");
              part<QSpinBox>(styles, "m_spinSize")->setValue(40);
              click(styles, "m_buttonColor");
          },
          [&](QDialog* colors) {
              static_cast<QColorDialog*>(colors)->setCurrentColor(kColor);
              auto* dialog = qobject_cast<QDialog*>(colors->parentWidget()->window());
              colors->accept();
              click(dialog, "m_applyButton");
              EXPECT_TRUE(dialog->isVisible());
              EXPECT_TRUE(shows(tree(), kColor)) << "while the dialog is open";
              click(dialog, "m_cancelButton");
          }});
    EXPECT_TRUE(shows(tree(), kColor)) << "what was applied stays";
    EXPECT_EQ(tree()->topLevelItem(0), first);
    EXPECT_EQ(tree()->currentItem(), nodeRow("Sphere"));
    EXPECT_TRUE(nodeRow("Sphere")->isSelected());
    EXPECT_TRUE(nodeRow("Cube")->parent()->isExpanded());
    EXPECT_EQ(tree()->verticalScrollBar()->value(), position);
    EXPECT_EQ(tree()->itemAt(2, 2), top);
    EXPECT_GT(tree()->visualItemRect(top).height(), height) << "the text fits";

    edit({[](QDialog* dialog) {
        click(page(dialog, "Tree View", "Node Type"), "m_pushToDefault");
        click(dialog, "m_okButton");
    }});
    EXPECT_FALSE(shows(tree(), kColor));
    EXPECT_EQ(tree()->visualItemRect(tree()->itemAt(2, 2)).height(), height);
    EXPECT_EQ(tree()->verticalScrollBar()->value(), position);
}

TEST_F(PreferencesTest, HidesTextsOfTheTree)
{
    open();
    edit({[](QDialog* dialog) {
        for (const char* element : {"Node/Part Name", "Reference Count", "Node Type"})
            click(page(dialog, "Tree View", element), "m_checkShow");
        click(dialog, "m_okButton");
    }});
    EXPECT_TRUE(tree()->isColumnHidden(1));
    EXPECT_TRUE(tree()->isColumnHidden(2));
    EXPECT_FALSE(tree()->isColumnHidden(0)) << "icons and branches";
}

TEST_F(PreferencesTest, ShowsNewStylesInTheFieldLists)
{
    open();
    tree()->expandAll();
    tree()->setCurrentItem(nodeRow("Cube"));
    support::flush();
    QTreeWidgetItem* field = fields()->topLevelItem(1);
    fields()->setCurrentItem(field);
    window()->findChild<QPushButton*>("m_watchButton")->click();
    fields()->setCurrentItem(fields()->topLevelItem(0));
    ASSERT_EQ(watch()->topLevelItemCount(), 1);
    const auto restyle = [](const char* name) {
        edit({[name](QDialog* dialog) {
                  click(page(dialog, name, "Default Value"), "m_buttonColor");
              },
              [](QDialog* colors) {
                  static_cast<QColorDialog*>(colors)->setCurrentColor(kColor);
                  auto* dialog = qobject_cast<QDialog*>(colors->parentWidget()->window());
                  colors->accept();
                  click(dialog, "m_okButton");
              }});
    };
    restyle("Node Overview");
    EXPECT_TRUE(shows(fields(), kColor));
    EXPECT_FALSE(shows(watch(), kColor)) << "it has styles of its own";
    EXPECT_EQ(fields()->topLevelItem(1), field) << "the rows are the same";
    EXPECT_EQ(fields()->currentItem(), fields()->topLevelItem(0));
    restyle("Field Watch");
    EXPECT_TRUE(shows(watch(), kColor));
}

TEST_F(PreferencesTest, SetsTransparencyAndBackgroundOfTheSceneManager)
{
    open();
    SoSceneManager* manager = services()->getSceneManager();
    ASSERT_NE(manager, nullptr);
    const SbColor before = manager->getBackgroundColor();
    edit({[](QDialog* dialog) { click(dialog, "m_okButton"); }});
    EXPECT_EQ(manager->getBackgroundColor(), before) << "not even rounded";
    edit({[](QDialog* dialog) {
              click(page(dialog, "Viewer"), "m_noTransparency");
              click(dialog, "m_backgroundButton");
          },
          [](QDialog* colors) {
              static_cast<QColorDialog*>(colors)->setCurrentColor(QColor(51, 102, 255));
              auto* dialog = qobject_cast<QDialog*>(colors->parentWidget()->window());
              colors->accept();
              click(dialog, "m_applyButton");
              click(dialog, "m_cancelButton");
          }});
    EXPECT_EQ(manager->getGLRenderAction()->getTransparencyType(), 13);
    EXPECT_TRUE(manager->getBackgroundColor().equals(SbVec3f(0.2f, 0.4f, 1), 1e-6f));
    edit({[](QDialog* dialog) {
        EXPECT_TRUE(part<QRadioButton>(page(dialog, "Viewer"), "m_noTransparency")->isChecked());
        dialog->reject();
    }});
}

TEST_F(PreferencesTest, SwitchesTheOutlineOffAndOn)
{
    open();
    SoSearchAction search;
    search.setType(SoSelection::getClassTypeId());
    search.apply(services()->getSceneManager()->getSceneGraph());
    ASSERT_NE(search.getPath(), nullptr);
    const auto* selection = static_cast<SoSelection*>(search.getPath()->getTail());
    tree()->setCurrentItem(nodeRow("Sphere"));
    support::flush();
    ASSERT_EQ(selection->getNumSelected(), 1);
    const auto flip = [] {
        edit({[](QDialog* dialog) {
            click(page(dialog, "Tree View"), "m_checkSelectedNode");
            click(dialog, "m_okButton");
        }});
    };
    flip();
    EXPECT_EQ(selection->getNumSelected(), 0);
    flip();
    ASSERT_EQ(selection->getNumSelected(), 1) << "what is current is outlined again";
    EXPECT_EQ(selection->getPath(0)->getTail()->getTypeId(), SoSphere::getClassTypeId());
}

TEST_F(PreferencesTest, EndsWhileItsDialogsAreOpen)
{
    open();
    QPointer<QDialog> dialog;
    edit({[&](QDialog* shown) {
        dialog = shown;
        SoMirabo::stop();
    }});
    EXPECT_FALSE(dialog);
    EXPECT_FALSE(SoMirabo::isRunning());

    open();
    QPointer<QDialog> colors;
    edit({[&](QDialog* shown) {
              dialog = shown;
              click(page(shown, "Viewer"), "m_backgroundButton");
          },
          [&](QDialog* shown) {
              colors = shown;
              SoMirabo::stop();
          }});
    EXPECT_FALSE(dialog);
    EXPECT_FALSE(colors);
    EXPECT_FALSE(SoMirabo::isRunning());
}

TEST_F(PreferencesTest, ShortcutsAreInForceAtOnceAndAtTheNextStart)
{
    open();
    QAction* find = action("Find &Next");
    ASSERT_EQ(find->shortcut(), QKeySequence("F3"));
    edit({[](QDialog* dialog) {
        auto* rows = part<QTreeWidget>(dialog, "m_shortcuts");
        rows->setCurrentItem(rows->findItems("Find Next", Qt::MatchExactly).value(0));
        auto* keys = part<QKeySequenceEdit>(dialog, "m_shortcutEdit");
        keys->setKeySequence(QKeySequence("Ctrl+G"));
        Q_EMIT keys->editingFinished();
        click(dialog, "m_okButton");
    }});
    EXPECT_EQ(find->shortcut(), QKeySequence("Ctrl+G"));
    EXPECT_TRUE(find->toolTip().contains("Ctrl+G"));
    hooks().m_mirabo_stop();
    open();
    EXPECT_EQ(action("Find &Next")->shortcut(), QKeySequence("Ctrl+G"));
}

TEST_F(PreferencesTest, AStartRestoresWhatTheUserWants)
{
    open();
    const std::string file = writeFile("last.ky", "#Kalmyr V1.0 ascii\nSeparator { Cone { } }\n");
    drop(file);
    edit({[](QDialog* dialog) {
        part<QCheckBox>(dialog, "m_restoreFile")->setChecked(true);
        part<QCheckBox>(dialog, "m_restoreWindow")->setChecked(false);
        click(dialog, "m_okButton");
    }});
    window()->resize(777, 666);
    pass();
    window()->close();
    hooks().m_mirabo_processEvents();
    hooks().m_mirabo_startStandalone(0, nullptr);
    pass();
    EXPECT_TRUE(window()->windowTitle().contains("last.ky"))
        << window()->windowTitle().toStdString();
    EXPECT_NE(window()->size(), QSize(777, 666));
}
