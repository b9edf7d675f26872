#include "OverviewSupport.h"

#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoHeaderView.h"
#include "mirabo/overview/SoMiraboList.h"
#include "mirabo/preferences/Settings.h"
#include "support/Passes.h"

#include <kalmyr/nodekits/SoShapeKit.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/shapes/SoCone.h>
#include <kalmyr/shapes/SoCube.h>

#include <QAbstractItemModelTester>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

namespace {

using MiraboListTest = OverviewTest;
using List = SoMiraboList;

/// Counts how often, and how much of, a list is painted.
class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget* widget) : QObject(widget) { widget->installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::Paint;
        return false;
    }
    int count = 0;
};

void toggle(List& list, const QString& column)
{
    QAction action(column);
    list.toggleHeaderColumnVisibility(&action);
}

int listenersOf(const SoField& field)
{
    return field.getAuditors().getLength();
}

} // namespace

TEST_F(MiraboListTest, ListsTheFieldsOfANodeInTheirOrder)
{
    m_probe->setName(SbName("probe"));
    List list;
    const QAbstractItemModelTester tester(list.model());
    list.setNode(m_probe.get());

    QStringList names;
    for (int i = 0; i < list.topLevelItemCount(); ++i)
        names << list.fieldItem(i)->text(List::FieldName);
    EXPECT_EQ(names.join(' '), "number vector many one nodes array image out");
    const SoFieldItem* first = list.fieldItem(0);
    EXPECT_EQ(first->text(List::NodeType), "Probe");
    EXPECT_EQ(first->text(List::NodeName), "probe");
    EXPECT_EQ(first->text(List::FieldTypeColumn), "SFFloat");
    EXPECT_EQ(first->text(List::FieldValue), "1.5");
    EXPECT_EQ(list.columnCount(), 8);
    EXPECT_TRUE(list.isColumnHidden(List::Hidden));
    EXPECT_EQ(list.headerItem()->toolTip(List::Ignored), "This field is ignored");
    EXPECT_EQ(list.headerItem()->toolTip(List::Connected), "This field is connected");

    QStringList greyed;
    for (int i = 0; i < list.topLevelItemCount(); ++i)
        if (list.fieldItem(i)->isDisabled())
            greyed << list.fieldItem(i)->text(List::FieldName);
    EXPECT_EQ(greyed.join(' '), "one nodes out");
    EXPECT_EQ(list.firstEnabledItem(), first);

    list.setNode(nullptr);
    EXPECT_EQ(list.topLevelItemCount(), 0);
    EXPECT_EQ(list.firstEnabledItem(), nullptr);
}

TEST_F(MiraboListTest, ComparesWithATwinThatHoldsTheDefaults)
{
    List list;
    m_probe->number.setValue(7);
    list.setNode(m_probe.get());
    const SoFieldItem* item = row(list, "number");
    ASSERT_NE(item->getDefaultField(), nullptr);
    EXPECT_NE(item->getDefaultField(), &m_probe->number);
    SbString text;
    item->getDefaultField()->get(text);
    EXPECT_STREQ(text.getString(), "1.5");
    EXPECT_FALSE(item->isFieldDefault());
    EXPECT_TRUE(row(list, "vector")->isFieldDefault());
}

TEST_F(MiraboListTest, FollowsTheSceneWhenTheQueueRuns)
{
    List list;
    list.setNode(m_probe.get());
    show(list);
    EXPECT_EQ(value(list, "number"), "1.5");

    m_probe->number.setValue(3);
    EXPECT_EQ(value(list, "number"), "1.5"); // not told yet
    pass();
    EXPECT_EQ(value(list, "number"), "3");

    EXPECT_TRUE(row(list, "number")->icon(List::Ignored).isNull());
    m_probe->number.setIgnored(true);
    const SoRef<Probe> master(new Probe);
    m_probe->vector.connectFrom(&master->vector);
    master->vector.setValue(7, 8, 9);
    pass();
    EXPECT_FALSE(row(list, "number")->icon(List::Ignored).isNull());
    EXPECT_FALSE(row(list, "vector")->icon(List::Connected).isNull());
    EXPECT_EQ(value(list, "vector"), "7 8 9");

    // An array that grows too big to be edited greys its row for good.
    m_probe->array.setValue(SbVec3i32(100, 100, 1), SoSFArray::FLOAT);
    pass();
    EXPECT_TRUE(row(list, "array")->isDisabled());
    m_probe->array.setValue(SbVec3i32(1, 1, 1), SoSFArray::FLOAT);
    pass();
    EXPECT_TRUE(row(list, "array")->isDisabled());
}

TEST_F(MiraboListTest, CostsNothingWhileHidden)
{
    List list;
    list.setNode(m_probe.get());
    EXPECT_EQ(listenersOf(m_probe->number), 0);
    show(list);
    EXPECT_EQ(listenersOf(m_probe->number), 1);
    EXPECT_EQ(value(list, "number"), "1.5");
    list.hide();
    EXPECT_EQ(listenersOf(m_probe->number), 0);

    m_probe->number.setValue(8);
    EXPECT_FALSE(SoSensorManager::isDelaySensorPending());
    EXPECT_EQ(value(list, "number"), "8"); // made when asked for
    m_probe->number.setValue(9);
    show(list);
    EXPECT_EQ(value(list, "number"), "9");
}

TEST_F(MiraboListTest, HoldsNoReferenceOnceTheChangeIsShown)
{
    List list;
    list.setNode(m_probe.get());
    show(list);
    m_probe->number.setValue(3);
    pass();
    EXPECT_EQ(m_probe->getRefCount(), 1);
}

TEST_F(MiraboListTest, RepaintsOnceForAllChangesOfAPass)
{
    List list;
    list.resize(1200, 400);
    list.setNode(m_probe.get());
    show(list);
    support::flush();
    const auto* counter = new PaintCounter(list.viewport());
    for (int i = 0; i < 1000; ++i) {
        m_probe->number.setValue(static_cast<float>(i));
        m_probe->vector.setValue(static_cast<float>(i), 0, 0);
    }
    SoSensorManager::processDelayQueue(true);
    EXPECT_TRUE(support::passUntil([counter] { return counter->count > 0; }));
    support::flush();
    EXPECT_EQ(counter->count, 1);
    EXPECT_EQ(value(list, "number"), "999");
}

TEST_F(MiraboListTest, ShowsAFieldOfManyValuesAsFastAsOneOfSix)
{
    m_probe->many.setNum(1'000'000);
    List list;
    list.setNode(m_probe.get());
    show(list);
    // 1,000 texts of all values would take minutes.
    for (int i = 0; i < 1000; ++i)
        list.updateFieldValue(row(list, "many"));
    EXPECT_EQ(value(list, "many"), "0, 0, 0, 0, 0, 0...");
}

TEST_F(MiraboListTest, TogglesColumnsFromTheHeaderMenu)
{
    List list;
    list.resize(900, 300);
    show(list);
    QSignalSpy spy(&list, &List::columnWidthChanged);
    toggle(list, "Field Value");
    EXPECT_EQ(list.columnWidth(List::FieldValue), 0);
    toggle(list, "Field &Value");
    const int label = list.header()->fontMetrics().horizontalAdvance("Field Value");
    EXPECT_EQ(list.columnWidth(List::FieldValue), label + 10);
    EXPECT_EQ(list.header()->sectionResizeMode(List::FieldValue), QHeaderView::Interactive);
    ASSERT_EQ(spy.count(), 2);
    EXPECT_EQ(spy.at(1).at(0).toInt(), List::FieldValue);
    EXPECT_EQ(spy.at(1).at(1).toInt(), label + 10);

    toggle(list, "Ignore");
    toggle(list, "Connected");
    EXPECT_EQ(list.columnWidth(List::Ignored), 0);
    EXPECT_EQ(list.columnWidth(List::Connected), 0);
    toggle(list, "Ignore");
    toggle(list, "Connected");
    EXPECT_EQ(list.columnWidth(List::Ignored), 20);
    EXPECT_EQ(list.columnWidth(List::Connected), 10); // its label is empty
    spy.clear();
    toggle(list, "Node NetName");
    toggle(list, "Something else");
    list.setColumnWidth(List::Ignored, 20);
    EXPECT_EQ(spy.count(), 0);
}

TEST_F(MiraboListTest, FitsItsColumnsIntoTheRoomThatThereIs)
{
    List list;
    const auto width = [&list] {
        return list.columnViewportPosition(List::FieldValue) + list.columnWidth(List::FieldValue);
    };
    for (const int room : {420, 1400, 420}) {
        list.resize(room, 200);
        show(list);
        EXPECT_LE(width(), list.viewport()->width());
        EXPECT_GT(width(), list.viewport()->width() - 10);
    }
    // In a narrow list the type gives way to the labels of the others, until there is room again.
    for (const auto column : {List::NodeType, List::NodeName})
        list.setColumnWidth(column, 0);
    const int label = list.header()->fontMetrics().horizontalAdvance("Field Name");
    list.resize(60 + 2 * label + 30, 200);
    QCoreApplication::processEvents();
    EXPECT_EQ(list.columnWidth(List::FieldTypeColumn), 0);
    EXPECT_EQ(list.storedWidth(List::FieldTypeColumn), -1);
    EXPECT_GE(list.columnWidth(List::FieldName), label);
    EXPECT_LE(width(), list.viewport()->width());
    toggle(list, "Field Type"); // the user wants it all the same
    EXPECT_GT(list.columnWidth(List::FieldTypeColumn), 0);
    list.resize(240, 200);
    QCoreApplication::processEvents();
    EXPECT_GT(list.columnWidth(List::FieldTypeColumn), 0);
    list.setColumnWidth(List::FieldName, 300); // what somebody wants is kept
    list.resize(430, 200);
    QCoreApplication::processEvents();
    EXPECT_EQ(list.columnWidth(List::FieldName), 300);
    EXPECT_EQ(list.storedWidth(List::FieldName), 300);
    EXPECT_EQ(list.storedWidth(List::FieldValue), -1);
}

TEST_F(MiraboListTest, OpensTheMenuOnARightClickOfTheHeader)
{
    List list;
    list.resize(900, 300);
    show(list);
    toggle(list, "Connected");
    QStringList entries;
    QTimer::singleShot(0, [&entries] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr);
        for (const QAction* action : menu->actions())
            entries << (action->isChecked() ? "+" : "-") + action->text();
        menu->close();
    });
    QTest::mouseClick(list.header()->viewport(), Qt::RightButton, {}, QPoint(40, 5));
    EXPECT_EQ(entries.join(' '), "+Ignore -Connected +Node Type +Node Name +Field Type +Field Name "
                                 "+Field Value");
}

TEST_F(MiraboListTest, ShowsNetNamesWhereAPreferenceAsksForThem)
{
    m_probe->setNetName(SbName("net"));
    for (const char* preference : {"KMRU_LAUNCH_MIRABO", "ART_LAUNCH_MIRABO"}) {
        const NetNameScope scope(preference);
        List list;
        list.setNode(m_probe.get());
        ASSERT_EQ(list.columnCount(), 9);
        EXPECT_EQ(list.headerItem()->text(List::NodeNetName), "Node NetName");
        EXPECT_EQ(list.fieldItem(0)->text(List::NodeNetName), "net");
        toggle(list, "Node NetName");
        EXPECT_EQ(list.columnWidth(List::NodeNetName), 0);
    }
    EXPECT_EQ(List().columnCount(), 8);
}

TEST_F(MiraboListTest, ShowsChangedValuesOnly)
{
    m_probe->number.setValue(7);
    List list;
    list.setNode(m_probe.get());
    show(list);
    list.showChangedValues(true);
    EXPECT_FALSE(row(list, "number")->isHidden());
    EXPECT_TRUE(row(list, "vector")->isHidden());

    m_probe->vector.setValue(0, 0, 0); // changes while hidden: comes into view
    pass();
    EXPECT_FALSE(row(list, "vector")->isHidden());
    list.showChangedValues(false);
    EXPECT_FALSE(row(list, "many")->isHidden());
}

TEST_F(MiraboListTest, ShowsPublicPartsOfNodeKitsWhenAsked)
{
    const SoRef<SoShapeKit> kit(new SoShapeKit);
    List list;
    list.setNode(kit.get());
    const SoFieldItem* part = row(list, "appearance");
    const SoFieldItem* shape = row(list, "shape");
    ASSERT_TRUE(part && shape);
    EXPECT_TRUE(shape->isPart());
    EXPECT_EQ(row(list, "shapeSeparator"), nullptr); // private
    EXPECT_FALSE(shape->isHidden());
    list.setShowCatalogParts(false);
    EXPECT_TRUE(shape->isHidden());
    list.setNode(kit.get());
    EXPECT_TRUE(row(list, "shape")->isHidden());

    // Both filters must let a part through.
    ASSERT_TRUE(kit->setPart("shape", new SoCone));
    list.showChangedValues(true);
    EXPECT_TRUE(row(list, "shape")->isHidden());
    list.setShowCatalogParts(true);
    EXPECT_FALSE(row(list, "shape")->isHidden());
    EXPECT_EQ(value(list, "shape"), "Cone");
    list.showChangedValues(false);
    list.setShowCatalogParts(false);
    list.showChangedValues(false);
    EXPECT_TRUE(row(list, "shape")->isHidden());
}

TEST_F(MiraboListTest, SortsNumbersAsNumbers)
{
    const SoRef<SoCube> cube(new SoCube);
    cube->width.setValue(10);
    cube->height.setValue(9);
    cube->depth.setValue(-2);
    List list;
    list.setNode(cube.get());
    const auto shown = [&list] {
        QStringList names;
        for (int i = 0; i < list.topLevelItemCount(); ++i)
            names << list.fieldItem(i)->text(List::FieldName);
        return names.join(' ');
    };
    list.sortByColumn(List::FieldValue, Qt::AscendingOrder);
    EXPECT_EQ(shown(), "depth height width");
    list.sortByColumn(List::FieldValue, Qt::DescendingOrder);
    EXPECT_EQ(shown(), "width height depth");
    list.sortByColumn(List::FieldName, Qt::AscendingOrder);
    EXPECT_EQ(shown(), "depth height width");
    cube->height.setIgnored(true);
    list.sortByColumn(List::Ignored, Qt::AscendingOrder);
    EXPECT_EQ(list.fieldItem(0)->text(List::FieldName), "height");
}

TEST_F(MiraboListTest, LetsTheUserReachGreyRowsByMouseAndKeys)
{
    List list;
    list.resize(900, 400);
    list.setNode(m_probe.get());
    show(list);
    SoFieldItem* grey = row(list, "one");
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.visualItemRect(grey).center());
    EXPECT_EQ(list.currentItem(), grey);
    QTest::keyClick(&list, Qt::Key_Down);
    EXPECT_EQ(list.currentItem(), row(list, "nodes"));
    QTest::keyClick(&list, Qt::Key_End);
    EXPECT_EQ(list.currentItem(), row(list, "out"));
    QTest::keyClick(&list, Qt::Key_Up);
    EXPECT_EQ(list.currentItem(), row(list, "image"));
    QTest::keyClick(&list, Qt::Key_Home);
    EXPECT_EQ(list.currentItem(), row(list, "number"));
}

TEST_F(MiraboListTest, CopiesTheValueAndTellsLongOnes)
{
    m_probe->many.setValues({1, 2, 3, 4, 5, 6, 7});
    List list;
    list.setNode(m_probe.get());
    show(list);
    list.setCurrentItem(row(list, "many"));
    QTest::keyClick(&list, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), "[ 1, 2, 3, 4, 5, 6, 7 ]");
    const QString tip = row(list, "many")->toolTip(List::FieldValue);
    EXPECT_TRUE(tip.contains("1, 2, 3, 4, 5, 6...") && tip.contains("7 values")) << qPrintable(tip);

    list.setPlaceProvider([](const SoNode*) { return QString("Root > <b>"); });
    EXPECT_TRUE(row(list, "many")->toolTip(List::FieldName).contains("Root &gt; &lt;b&gt;.many"));
}

TEST_F(MiraboListTest, FindsUpdatesAndRemovesRows)
{
    List list;
    list.setNode(m_probe.get());
    SoFieldItem* item = list.findFieldItem(&m_probe->many);
    EXPECT_EQ(item, row(list, "many"));
    EXPECT_EQ(list.findFieldItem(&m_probe->hidden), nullptr);

    List other;
    other.setNode(m_probe.get());
    other.removeFieldItem(item); // of another list
    EXPECT_EQ(list.topLevelItemCount(), 8);
    m_probe->many.setNum(3);
    list.removeFieldItem(item);
    EXPECT_EQ(list.topLevelItemCount(), 7);
    m_probe->many.setNum(5); // nobody looks after it any more
    EXPECT_EQ(item->text(List::FieldValue), "0, 0, 0");
    delete item;
    list.updateField(nullptr);
    list.updateField(&m_probe->number);
    EXPECT_EQ(value(list, "number"), "1.5");
}

TEST_F(MiraboListTest, BearsThatRowsGoWhileTheCurrentOneIsAnnounced)
{
    List list;
    list.setNode(m_probe.get());
    list.show();
    const SoRef<SoCone> cone(new SoCone);
    const std::function<void()> choices[] = {
        [&] { list.setCurrentItem(list.topLevelItem(1)); },
        [&] { list.chooseRow(list.topLevelItem(1)); },
        [&] { QTest::keyClick(&list, Qt::Key_PageDown); },
        [&] {
            QTest::mouseClick(list.viewport(), Qt::LeftButton, {},
                              list.visualItemRect(list.topLevelItem(1)).center());
        },
    };
    for (const auto& choose : choices) {
        list.setNode(m_probe.get());
        list.chooseRow(list.topLevelItem(0));
        const auto connection =
            QObject::connect(&list, &List::currentRowChanged, &list,
                             [&](const QTreeWidgetItem* current, const QTreeWidgetItem*) {
                                 if (!current)
                                     return; // the list is being cleared
                                 list.setNode(cone.get());
                                 EXPECT_FALSE(current->treeWidget());
                             });
        choose();
        QObject::disconnect(connection);
        EXPECT_TRUE(row(list, "bottomRadius"));
        list.setNode(m_probe.get()); // tracks what is left of the indices
        QCoreApplication::processEvents();
        EXPECT_EQ(list.topLevelItemCount(), 8);
    }
}

TEST_F(MiraboListTest, KeepsWhatADeadNodeSaidLast)
{
    List shown;
    List hidden;
    m_probe->number.setValue(42);
    m_probe->vector.setIgnored(true);
    shown.setNode(m_probe.get());
    hidden.setNode(m_probe.get());
    show(shown);
    const SoField* field = &m_probe->number;
    QSignalSpy spy(&shown, &List::fieldDied);
    m_probe = nullptr;

    for (List* list : {&shown, &hidden}) {
        const SoFieldItem* item = row(*list, "number");
        EXPECT_EQ(item->text(List::FieldValue), "42");
        EXPECT_EQ(item->text(List::NodeName), "(deleted)");
        EXPECT_TRUE(item->isDisabled());
        EXPECT_FALSE(item->isFieldDefault());
        EXPECT_EQ(item->getField(), nullptr);
        EXPECT_EQ(item->getNode(), nullptr);
        EXPECT_FALSE(row(*list, "vector")->icon(List::Ignored).isNull());
        list->updateField(nullptr);
        list->showChangedValues(true);
        list->chooseRow(list->topLevelItem(0));
        list->copyCurrentValue();
        EXPECT_EQ(QApplication::clipboard()->text(), "42");
    }
    EXPECT_EQ(spy.count(), 8);
    EXPECT_EQ(spy.at(0).at(0).value<const SoField*>(), field);
    pass();
}

TEST_F(MiraboListTest, LetsANodeDieBetweenAChangeAndItsReport)
{
    List list;
    list.setNode(m_probe.get());
    show(list);
    m_probe->number.setValue(5);
    m_probe = nullptr; // the waiting sensor keeps it until its turn
    pass();
    EXPECT_EQ(value(list, "number"), "5");
    EXPECT_EQ(row(list, "number")->getNode(), nullptr);
}

TEST_F(MiraboListTest, LetsAFieldDieBeforeItsNode)
{
    SoRef<Declared> node(new Declared);
    List shown;
    List hidden;
    List hiddenLater;
    for (List* list : {&shown, &hidden, &hiddenLater})
        list->setNode(node.get());
    show(shown);
    show(hiddenLater);
    node->field->setValue(4);
    pass();
    hiddenLater.hide();
    EXPECT_EQ(value(shown, "declared"), "4");
    const QSignalSpy spies[] = {
        {&shown, &List::fieldDied}, {&hidden, &List::fieldDied}, {&hiddenLater, &List::fieldDied}};
    node->field.reset();
    for (List* list : {&shown, &hidden, &hiddenLater}) {
        EXPECT_EQ(row(*list, "declared")->getField(), nullptr);
        show(*list); // nothing of the dead field is asked
    }
    EXPECT_EQ(value(shown, "declared"), "4");
    EXPECT_EQ(value(hidden, "declared"), "0"); // what it was when somebody last looked
    EXPECT_EQ(value(hiddenLater, "declared"), "4");
    delete shown.topLevelItem(0);
    node = nullptr;
    for (const QSignalSpy& spy : spies)
        EXPECT_EQ(spy.count(), 1);
}

TEST_F(MiraboListTest, PaintsChangedValuesInTheirStyle)
{
    mirabo::StyleTable styles = mirabo::defaultFieldStyles();
    mirabo::TextStyle changed = styles["Changed Value"];
    changed.color = QColor(0, 200, 0);
    changed.font.setBold(true);
    styles.set("Changed Value", changed);
    m_probe->number.setValue(12345678);
    List list;
    list.resize(900, 200);
    list.setStyles(styles);
    list.setNode(m_probe.get());
    show(list);
    const auto greenPixels = [&list](const char* field) {
        const QModelIndex index =
            list.model()->index(list.indexOfTopLevelItem(row(list, field)), List::FieldValue);
        const QImage cell = list.viewport()->grab(list.visualRect(index)).toImage();
        int green = 0;
        for (int y = 0; y < cell.height(); ++y)
            for (int x = 0; x < cell.width(); ++x) {
                const QColor pixel = cell.pixelColor(x, y);
                green += pixel.green() > pixel.red() + 60 && pixel.green() > pixel.blue() + 60;
            }
        return green;
    };
    EXPECT_GT(greenPixels("number"), 30);
    EXPECT_EQ(greenPixels("vector"), 0);
}
