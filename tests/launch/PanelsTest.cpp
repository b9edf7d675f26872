#include "LaunchSupport.h"

#include "mirabo/extender/MrbServices.h"

#include <QAction>
#include <QDragMoveEvent>
#include <QHeaderView>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QSettings>
#include <QStatusBar>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

namespace {

constexpr const char* kScene = "#Kalmyr V1.0 ascii\n"
                               "Separator {\n"
                               "  Separator { DEF sky\xc3\xa9 Cube { width 3 } }\n"
                               "  AsciiText { string [ \"\xd0\x9c\xd0\xb8\xd1\x80\", \"b\" ] }\n"
                               "}\n";
constexpr int kIgnored = 1;
constexpr int kNodeName = 4;
constexpr int kFieldName = 6;
constexpr int kFieldValue = 7;

/// Tree, node overview and field watch of the whole tool, used with mouse and keys.
class PanelsTest : public LaunchTest {
protected:
    void open()
    {
        hooks().m_mirabo_startStandalone(0, nullptr);
        drop(writeFile("scene.ky", kScene));
        spread();
    }
    /// All rows and panels can be clicked.
    static void spread()
    {
        window()->resize(1400, 900);
        QApplication::setActiveWindow(window());
        tree()->expandAll();
        pass();
    }
    static QTabWidget* tabs() { return window()->findChild<QTabWidget*>("SoTabNodeOverview"); }
    static QTreeWidget* fields()
    {
        return tabs()->currentWidget()->findChild<QTreeWidget*>("m_nodeOverviewList");
    }
    static QTreeWidget* watch() { return window()->findChild<QTreeWidget*>("m_fieldWatch"); }
    static QTreeWidgetItem* row(QTreeWidget* list, const QString& text, int column = kFieldName)
    {
        return list->findItems(text, Qt::MatchExactly | Qt::MatchRecursive, column).value(0);
    }
    static void click(QTreeWidget* list, QTreeWidgetItem* item)
    {
        ASSERT_NE(item, nullptr);
        list->scrollToItem(item);
        pass();
        list->setFocus(Qt::MouseFocusReason);
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                          list->visualItemRect(item).center());
        pass();
    }
    static void clickNode(const QString& type) { click(tree(), row(tree(), type, 0)); }
    static void clickField(const QString& name) { click(fields(), row(fields(), name)); }
    static void press(const QString& text)
    {
        ASSERT_TRUE(action(text)->isEnabled()) << text.toStdString();
        action(text)->trigger();
        pass();
    }
    static void watchField(const QString& name)
    {
        clickField(name);
        tabs()->currentWidget()->findChild<QPushButton*>("m_watchButton")->click();
        pass();
    }
    static bool isIgnored(const QString& field)
    {
        return !row(fields(), field)->icon(kIgnored).isNull();
    }
};

TEST_F(PanelsTest, IgnoresOrDisablesWhatWasSelectedLast)
{
    const QString ignore = "&Set Ignored/Enable";
    open();
    clickNode("Cube");
    ASSERT_NE(row(fields(), "width"), nullptr);
    press(ignore); // the node: its first field was selected with it, not by the user
    EXPECT_FALSE(isIgnored("width"));
    EXPECT_TRUE(action("&Undo")->isEnabled());
    press("&Undo");

    clickNode("Cube");
    clickField("height");
    press(ignore);
    EXPECT_TRUE(isIgnored("height"));
    press("&Undo");
    EXPECT_FALSE(isIgnored("height"));
    press("&Redo");
    EXPECT_TRUE(isIgnored("height"));
    press("&Undo");

    // A row that was current all the time counts once it is clicked.
    watchField("depth");
    click(watch(), watch()->topLevelItem(0));
    clickField("depth");
    clickNode("Cube");
    clickField("depth");
    press(ignore);
    EXPECT_TRUE(isIgnored("depth"));
    press("&Undo");
    clickNode("Cube");
    press(ignore);
    EXPECT_FALSE(isIgnored("depth"));
    press("&Undo");
}

TEST_F(PanelsTest, TellsInTheStatusBarWhatADropWouldDo)
{
    open();
    QTreeWidgetItem* dragged = row(tree(), "AsciiText", 0);
    QTreeWidgetItem* target = row(tree(), "Cube", 0)->parent();
    click(tree(), dragged);
    QTest::mousePress(tree()->viewport(), Qt::LeftButton, {},
                      tree()->visualItemRect(dragged).center());
    QMimeData data;
    data.setText("Mirabo/Drop");
    const QPoint point = tree()->visualItemRect(target).center();
    QDragEnterEvent enter(point, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(tree()->viewport(), &enter);
    QDragMoveEvent over(point, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(tree()->viewport(), &over);
    EXPECT_TRUE(window()->statusBar()->currentMessage().startsWith(
        "Move AsciiText into Separator, behind its other nodes"));
    QDropEvent drop(point, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(tree()->viewport(), &drop);
    QTest::mouseRelease(tree()->viewport(), Qt::LeftButton);
    EXPECT_FALSE(window()->statusBar()->currentMessage().contains("Move AsciiText into"));
    EXPECT_EQ(target->childCount(), 2);
    press("&Undo");
    EXPECT_EQ(target->childCount(), 1);
}

TEST_F(PanelsTest, DeletesInTheWatchWhileThatHasTheFocus)
{
    open();
    clickNode("Cube");
    watchField("width");
    watchField("height");
    ASSERT_EQ(watch()->topLevelItemCount(), 2);
    click(watch(), watch()->topLevelItem(0));
    press("&Delete");
    ASSERT_EQ(watch()->topLevelItemCount(), 1);
    EXPECT_EQ(watch()->topLevelItem(0)->text(kFieldName), "height");
    EXPECT_EQ(watch()->topLevelItem(0)->text(kNodeName), QString::fromUtf8("sky\xc3\xa9"));

    clickNode("AsciiText");
    action("&Delete")->trigger(); // no row of the watch is meant
    EXPECT_EQ(watch()->topLevelItemCount(), 1);

    const QPoint place = watch()->visualItemRect(watch()->topLevelItem(0)).center();
    QStringList entries;
    QTimer::singleShot(0, [&entries] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr);
        for (QAction* entry : menu->actions()) {
            entries << entry->text();
            entry->trigger();
        }
        menu->close();
    });
    Q_EMIT watch()->customContextMenuRequested(place);
    EXPECT_EQ(entries.join(' '), "&Delete");
    EXPECT_EQ(watch()->topLevelItemCount(), 0);
    QApplication::setActiveWindow(window()); // no longer the menu
    watch()->setFocus();
    pass();
    EXPECT_FALSE(action("&Delete")->isEnabled()) << "the watch has it for the second time";
}

TEST_F(PanelsTest, RevealsAWatchedNodeInTreeAndOverview)
{
    open();
    clickNode("Cube");
    watchField("width");
    clickNode("AsciiText");
    EXPECT_EQ(row(fields(), "string")->text(kFieldValue),
              QString::fromUtf8("\"\xd0\x9c\xd0\xb8\xd1\x80\", \"b\""));
    const QPoint place = watch()->visualItemRect(watch()->topLevelItem(0)).center();
    QTest::mouseClick(watch()->viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(watch()->viewport(), Qt::LeftButton, {}, place);
    pass();
    EXPECT_EQ(tree()->currentItem()->text(0), "Cube");
    EXPECT_EQ(tabs()->tabText(tabs()->currentIndex()), "Cube");
}

TEST_F(PanelsTest, DrawsWithPreferencesOnceTheyAreSaved)
{
    open();
    clickNode("Cube");
    watchField("width");
    clickField("height");
    const auto isGreen = [](QTreeWidget* list) {
        const QTreeWidgetItem* item = row(list, "width");
        const QImage image = list->viewport()->grab(list->visualItemRect(item)).toImage();
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixelColor(x, y) == QColor(0, 170, 0))
                    return true;
        return false;
    };
    const auto choose = [](const char* button) {
        QTimer::singleShot(0, [button] {
            QWidget* dialog = QApplication::activeModalWidget();
            ASSERT_NE(dialog, nullptr);
            dialog->findChild<QPushButton*>(button)->click();
            dialog->close();
        });
        press("&Preferences...");
    };
    QSettings store("Mirabo", "MiraboViewer");
    for (const char* group : {"NodeOverviewPreferences", "FieldWatchPreferences"}) {
        const QString key = QString("/%1/Changed Value/").arg(group);
        store.setValue(key + "red", 0);
        store.setValue(key + "green", 170);
    }
    choose("m_cancelButton");
    EXPECT_FALSE(isGreen(fields()) || isGreen(watch()));
    choose("m_applyButton");
    EXPECT_TRUE(isGreen(fields()));
    EXPECT_TRUE(isGreen(watch()));
}

TEST_F(PanelsTest, TakesTheSelectedFieldBackWhenItsNodeDies)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    root->addChild(new SoCube);
    hooks().m_mirabo_startNode(root.get());
    spread();
    tree()->setCurrentItem(row(tree(), "Cube", 0));
    pass();
    watchField("width");
    click(watch(), watch()->topLevelItem(0));
    const MrbServices* services = MrbServices::getInstance();
    ASSERT_EQ(services->getSelectedField(), root->getChild(0)->getField("width"));
    root->removeAllChildren();
    EXPECT_EQ(services->getSelectedField(), nullptr);
    EXPECT_EQ(services->getSelectedNode(), nullptr);
    EXPECT_EQ(watch()->topLevelItem(0)->text(kNodeName).right(9), "(deleted)");
    EXPECT_TRUE(watch()->topLevelItem(0)->isDisabled());
    click(watch(), watch()->topLevelItem(0));
    press("&Delete");
    EXPECT_EQ(watch()->topLevelItemCount(), 0);
    pass();
}

TEST_F(PanelsTest, KeepsColumnsAndWatchOverARestart)
{
    open();
    fields()->header()->resizeSection(kIgnored, 41);
    watch()->header()->resizeSection(kFieldName, 123);
    window()->close();
    hooks().m_mirabo_processEvents();
    hooks().m_mirabo_stop();
    open();
    EXPECT_EQ(watch()->columnWidth(kFieldName), 123);
}

} // namespace
