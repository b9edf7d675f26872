#include "ListSupport.h"

#include "mirabo/plugins/defaults/ListDelegate.h"
#include "support/ErrorGuard.h"

#include <kalmyr/fields/SoMFEnum.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoSphere.h>

#include <QAbstractItemModelTester>
#include <QColorDialog>
#include <QLineEdit>
#include <QMainWindow>
#include <QPlainTextEdit>

#include <cmath>
#include <cstring>
#include <limits>

namespace {

using ListWidgetTest = ListTest;

SoMFVec3f& fill(SoMFVec3f& field, int num)
{
    for (int i = 0; i < num; ++i)
        field.set1Value(i, SbVec3f(static_cast<float>(i), 0.1f, -0.0f));
    return field;
}

TEST_F(ListWidgetTest, HasNoCompactForm)
{
    SoMFFloat list;
    SoSFFloat number;
    MrbFieldEdit edit(&list);
    MrbFieldEdit other(&number);
    EXPECT_EQ(makeListWidget(&edit, MrbFieldWidget::Form::Compact, nullptr), nullptr);
    EXPECT_EQ(makeListWidget(&other, MrbFieldWidget::Form::Full, nullptr), nullptr);
}

TEST_F(ListWidgetTest, AppliesWhatIsTypedAsOneCommand)
{
    SoMFVec3f field;
    show(fill(field, 3));
    click(1, 1);
    type("2*");
    EXPECT_EQ(field[1][1], 2) << "as far as it is legal";
    type("3.5");
    EXPECT_EQ(field[1], SbVec3f(1, 7, 0));
    press(Qt::Key_Return);
    EXPECT_FALSE(isCellOpen());
    EXPECT_EQ(services.done(), 1);
    EXPECT_TRUE(std::signbit(field[1][2])) << "the others keep their bits";
    EXPECT_EQ(shown(1, 1), "7");

    press(Qt::Key_F2);
    type("9");
    press(Qt::Key_Return);
    EXPECT_EQ(services.done(), 2);
    services.undo();
    services.undo();
    EXPECT_EQ(field[1][1], 0.1f);
}

TEST_F(ListWidgetTest, EscapeGivesBackTheBitsFromBefore)
{
    SoMFDouble field;
    field.setValue(-0.0);
    field.setDefault(true);
    show(field);
    click(0, 0);
    press(Qt::Key_Return);
    type("17");
    EXPECT_EQ(field[0], 17);
    press(Qt::Key_Escape);
    EXPECT_FALSE(isCellOpen());
    EXPECT_TRUE(std::signbit(field[0]));
    EXPECT_TRUE(field.isDefault());
    EXPECT_EQ(services.done(), 0);
}

TEST_F(ListWidgetTest, KeepsAnIllegalTextUntilItIsMended)
{
    SoMFShort field;
    field.setValue(5);
    field.set1Value(1, 6);
    show(field);
    for (const char* text : {"x", "70000", "1.5", "nan", "1+", ""}) {
        click(0, 0);
        press(Qt::Key_F2);
        press(Qt::Key_Delete);
        type(text);
        EXPECT_TRUE(widget().isTyping()) << text;
        press(Qt::Key_Return);
        press(Qt::Key_Tab);
        press(Qt::Key_Down);
        click(1, 0);
        widget().action(ListAction::Delete)->trigger();
        EXPECT_TRUE(isCellOpen()) << text;
        auto* line = qobject_cast<QLineEdit*>(QApplication::focusWidget());
        ASSERT_TRUE(line);
        EXPECT_EQ(line->text(), text);
        EXPECT_TRUE(line->property("illegal").toBool());
        EXPECT_FALSE(line->toolTip().isEmpty());
        press(Qt::Key_Escape);
        EXPECT_EQ(field[0], 5) << text;
        EXPECT_FALSE(widget().isTyping());
    }
    EXPECT_EQ(services.done(), 0);
    EXPECT_EQ(field.getNum(), 2);

    press(Qt::Key_F2);
    type("7x");
    press(Qt::Key_Backspace);
    press(Qt::Key_Return);
    EXPECT_EQ(field[0], 7) << "mended";
}

TEST_F(ListWidgetTest, ConfirmingWhatIsShownChangesNothing)
{
    const auto confirmAll = [this](SoField& field) {
        field.setDefault(true);
        const std::string before = text(field);
        show(field);
        click(0, index(0, 0).flags() & Qt::ItemIsEditable ? 0 : 1);
        for (int i = 0; i < 3; ++i) {
            press(Qt::Key_F2);
            ASSERT_TRUE(isCellOpen());
            press(i == 1 ? Qt::Key_Return : Qt::Key_Tab);
        }
        press(Qt::Key_Return);
        EXPECT_TRUE(field.isDefault()) << before;
        EXPECT_EQ(text(field), before);
        EXPECT_EQ(services.done(), 0) << before;
    };
    SoMFFloat floats;
    int i = 0;
    for (const float value : {std::numeric_limits<float>::quiet_NaN(), -0.0f, 1e-45f, 3.4028235e38f,
                              -std::numeric_limits<float>::infinity(), 0.1f})
        floats.set1Value(i++, value);
    confirmAll(floats);
    SoMFRotation rotations;
    rotations.set1Value(0, SbRotation(SbVec3f(1, 2, 3), 0.7f));
    rotations.set1Value(1, SbRotation());
    confirmAll(rotations);
    SoMFColor colors;
    colors.set1Value(0, SbColor(0.1f, 2, -1));
    colors.set1Value(1, SbColor(0, 0, 0));
    confirmAll(colors);
    SoMFString strings;
    strings.set1Value(0, SbString("a\xff\n\r\xc2\xa0"));
    strings.set1Value(1, SbString("one\ntwo\xc2\xa0three"));
    strings.set1Value(2, SbString("\"tab\t\""));
    confirmAll(strings);
}

TEST_F(ListWidgetTest, TypedBackToWhatWasShownGivesTheExactValueBack)
{
    SoMFRotation field;
    const SbRotation value(SbVec3f(1, 2, 3), 0.7f);
    field.setValue(value);
    show(field);
    click(0, 3);
    press(Qt::Key_F2);
    const QString angle = shown(0, 3);
    type("1");
    EXPECT_FALSE(field[0] == value);
    press(Qt::Key_Backspace);
    type(angle);
    press(Qt::Key_Return);
    EXPECT_EQ(std::memcmp(&field[0], &value, sizeof value), 0);
}

TEST_F(ListWidgetTest, TabGoesOnToTheNextCell)
{
    SoMFVec2f field;
    field.setNum(2);
    show(field);
    click(0, 0);
    for (const char* text : {"1", "2", "3", "4"}) {
        type(text);
        press(Qt::Key_Tab);
    }
    EXPECT_EQ(field[0], SbVec2f(1, 2));
    EXPECT_EQ(field[1], SbVec2f(3, 4));
    EXPECT_EQ(services.done(), 4);
    EXPECT_FALSE(isCellOpen()) << "behind the last one";
    press(Qt::Key_F2);
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    type("9");
    press(Qt::Key_Down);
    EXPECT_EQ(field[1], SbVec2f(9, 4));
}

TEST_F(ListWidgetTest, FollowsChangesFromOutsideWithoutDisturbing)
{
    SoMFVec3f field;
    show(fill(field, 5));
    const QAbstractItemModelTester tester(view().model());
    view().selectRows(RowRanges({1, 2}));
    click(3, 0);
    click(1, 0, Qt::ControlModifier);
    const QItemSelection selection = view().selectionModel()->selection();
    press(Qt::Key_F2);
    field.set1Value(1, SbVec3f(77, 0, 0));
    ASSERT_TRUE(support::passUntil([&] { return shown(1, 0) == "77"; }));
    auto* line = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text(), "77") << "nothing is typed yet";

    type("5");
    field.setNum(1'000);
    field.set1Value(1, SbVec3f(78, 0, 0));
    ASSERT_TRUE(support::passUntil([&] { return view().model()->rowCount() == 1'000; }));
    EXPECT_EQ(QApplication::focusWidget(), line);
    EXPECT_EQ(line->text(), "5");
    EXPECT_TRUE(line->property("outdated").toBool());
    EXPECT_TRUE(line->toolTip().contains("78"));
    EXPECT_EQ(view().selectionModel()->selection(), selection);
    type("6");
    press(Qt::Key_Return);
    EXPECT_EQ(field[1][0], 56);
}

TEST_F(ListWidgetTest, ClosesTheCellOfARowThatGoes)
{
    SoMFVec3f field;
    show(fill(field, 5));
    click(4, 0);
    press(Qt::Key_F2);
    type("1+");
    ASSERT_TRUE(widget().isTyping());
    field.setNum(2);
    ASSERT_TRUE(support::passUntil([&] { return widget().isOutdated(); }));
    widget().showValue();
    EXPECT_FALSE(widget().isTyping());
    EXPECT_FALSE(edit().isInGesture());
    EXPECT_EQ(view().model()->rowCount(), 2);
}

TEST_F(ListWidgetTest, ChangesTheCellThroughTheKeysOfTheTableOnly)
{
    SoMFVec3f field;
    show(fill(field, 3));
    QMainWindow window;
    int triggered = 0;
    auto* action = new QAction(&window);
    action->setShortcut(Qt::Key_Delete);
    QObject::connect(action, &QAction::triggered, &window, [&triggered] { ++triggered; });
    window.addAction(action);
    auto* line = new QLineEdit;
    auto* panel = new QWidget;
    window.setCentralWidget(panel);
    widget().setParent(panel);
    line->setParent(panel);
    window.show();
    widget().show();
    QApplication::setActiveWindow(&window);
    ASSERT_TRUE(support::passUntilExposed(&window));
    click(1, 0);
    view().setFocus();
    press(Qt::Key_Delete);
    EXPECT_EQ(triggered, 0);
    EXPECT_EQ(field.getNum(), 2);
    widget().setParent(nullptr);
}

TEST_F(ListWidgetTest, TakesNumbersUpToTheLimits)
{
    SoMFFloat field;
    field.setNum(1);
    show(field);
    click(0, 0);
    const auto typed = [this, &field](const char* number) {
        press(Qt::Key_F2);
        type(number);
        EXPECT_FALSE(widget().isTyping()) << number;
        press(Qt::Key_Return);
        return field[0];
    };
    EXPECT_TRUE(std::isnan(typed("nan")));
    EXPECT_EQ(shown(0, 0), "nan");
    EXPECT_EQ(typed("-inf"), -std::numeric_limits<float>::infinity());
    EXPECT_EQ(typed("3.4028235e38"), std::numeric_limits<float>::max());
    EXPECT_EQ(typed("1e-45"), std::numeric_limits<float>::denorm_min());
    EXPECT_TRUE(std::signbit(typed("-0")));
    press(Qt::Key_F2);
    type("4e38");
    EXPECT_TRUE(widget().isTyping());
    press(Qt::Key_Escape);
    EXPECT_TRUE(std::signbit(field[0])) << "-0, as before";
}

TEST_F(ListWidgetTest, ShowsColoursAndChoosesThem)
{
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    SoMFColorRGBA field;
    field.setValue(SbColorRGBA(1, 0, 2, 0.5f));
    show(field);
    EXPECT_EQ(view().model()->columnCount(), 5);
    EXPECT_EQ(index(0, 0).data(Qt::DecorationRole).value<QColor>().rgba(), qRgba(255, 0, 255, 128));
    const auto openDialog = [this]() -> QColorDialog* {
        QApplication::setActiveWindow(&widget()); // as a window manager does
        click(0, 0);
        press(Qt::Key_Return);
        return widget().findChild<QColorDialog*>();
    };
    QColorDialog* dialog = openDialog();
    ASSERT_TRUE(dialog);
    static_cast<QDialog*>(dialog)->accept();
    support::flush();
    EXPECT_EQ(field[0], SbColorRGBA(1, 0, 2, 0.5f)) << "confirmed unchanged";
    dialog = openDialog();
    dialog->setCurrentColor(Qt::green);
    dialog->setCurrentColor(Qt::blue);
    EXPECT_EQ(field[0], SbColorRGBA(0, 0, 1, 1));
    static_cast<QDialog*>(dialog)->accept();
    support::flush();
    EXPECT_EQ(services.done(), 1);
    dialog = openDialog();
    dialog->setCurrentColor(Qt::green);
    dialog->reject();
    EXPECT_EQ(field[0], SbColorRGBA(0, 0, 1, 1));
    EXPECT_EQ(services.done(), 1);
}

TEST_F(ListWidgetTest, SwitchesBooleans)
{
    SoMFBool field;
    field.setNum(3);
    show(field);
    click(0, 0);
    press(Qt::Key_Space);
    EXPECT_TRUE(field[0]);
    press(Qt::Key_Return);
    EXPECT_FALSE(field[0]);
    QStyleOptionViewItem option;
    option.rect = view().visualRect(index(1, 0));
    option.features |= QStyleOptionViewItem::HasCheckIndicator;
    const QRect box =
        view().style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, &view());
    QTest::mouseClick(view().viewport(), Qt::LeftButton, {}, box.center());
    EXPECT_TRUE(field[1]);
    EXPECT_EQ(services.done(), 3);
    view().selectAll();
    answer(ListAction::Set, "true");
    EXPECT_TRUE(field[0] && field[1] && field[2]);
}

TEST_F(ListWidgetTest, EditsNamesOfValues)
{
    static constexpr SoEnumEntry kNames[] = {{"ONE", 1}, {"TWO", 2}};
    SoMFEnum field;
    field.setEnums(kNames);
    field.setNum(2);
    show(field);
    EXPECT_EQ(shown(0, 0), "0") << "has no name";
    click(0, 0);
    type("TWO");
    press(Qt::Key_Return);
    EXPECT_EQ(field[0], 2);
    press(Qt::Key_F2);
    type("THREE");
    EXPECT_TRUE(widget().isTyping());
    press(Qt::Key_Escape);
    EXPECT_EQ(field[0], 2);
    EXPECT_EQ(shown(0, 0), "TWO");
}

TEST_F(ListWidgetTest, EditsStringsOfSeveralLines)
{
    SoMFString field;
    field.set1Value(0, "one\ntwo");
    show(field);
    EXPECT_EQ(shown(0, 0), QString("one\u21b5two"));
    click(0, 0);
    press(Qt::Key_F2);
    ASSERT_TRUE(qobject_cast<QPlainTextEdit*>(QApplication::focusWidget()));
    press(Qt::Key_End, Qt::ControlModifier);
    press(Qt::Key_Return, Qt::ShiftModifier);
    type("three");
    press(Qt::Key_Return);
    EXPECT_EQ(field[0], "one\ntwo\nthree");
    EXPECT_EQ(services.done(), 1);
    type("x");
    EXPECT_EQ(field[0], "x") << "typing replaces what is there";
}

TEST_F(ListWidgetTest, MovesAndDeletesNodes)
{
    SoMFNode field;
    const SoRef<SoCube> cube(new SoCube);
    const SoRef<SoGroup> wheel(new SoGroup);
    wheel->setName("Wheel");
    field.addNode(cube.get());
    field.addNode(wheel.get());
    field.addNode(nullptr);
    show(field);
    EXPECT_EQ(shown(0, 0), "Cube");
    EXPECT_EQ(shown(1, 0), "Group  Wheel");
    EXPECT_EQ(shown(2, 0), "NULL");
    click(0, 0);
    press(Qt::Key_F2);
    type("x");
    EXPECT_FALSE(isCellOpen());
    EXPECT_FALSE(widget().action(ListAction::Append)->isEnabled());
    press(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(field[0], wheel.get());
    EXPECT_EQ(field[1], cube.get());
    EXPECT_EQ(view().currentRow(), 1) << "goes along";
    press(Qt::Key_Delete);
    EXPECT_EQ(field.getNum(), 2);
    EXPECT_EQ(services.done(), 2);
    services.undo();
    services.undo();
    EXPECT_EQ(field[0], cube.get());
    EXPECT_EQ(field[1], wheel.get());
    EXPECT_EQ(field[2], nullptr);
}

TEST_F(ListWidgetTest, ShowsAnEmptyListAndFillsIt)
{
    SoMFVec3f field;
    show(field);
    EXPECT_EQ(widget().footText(), "0 values");
    for (const ListAction action : {ListAction::Delete, ListAction::Copy, ListAction::Set,
                                    ListAction::GoTo, ListAction::SortAscending})
        EXPECT_FALSE(widget().action(action)->isEnabled());
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_F2);
    press(Qt::Key_Delete);
    press(Qt::Key_Insert);
    ASSERT_EQ(field.getNum(), 1);
    EXPECT_EQ(field[0], SbVec3f(0, 0, 0));
    press(Qt::Key_Delete);
    EXPECT_EQ(field.getNum(), 0);
    putOnClipboard("1\t2\t3\r\n4\t5\t6\r\n");
    press(Qt::Key_V, Qt::ControlModifier);
    ASSERT_EQ(field.getNum(), 2) << widget().problemText().toStdString();
    EXPECT_EQ(field[1], SbVec3f(4, 5, 6));
    EXPECT_EQ(services.done(), 3);
}

TEST_F(ListWidgetTest, CanOnlyBeReadWhenItIsConnected)
{
    SoMFVec3f master, field;
    fill(master, 3);
    field.connectFrom(&master);
    show(field);
    widget().setReadOnly(!edit().isEditable());
    EXPECT_EQ(shown(2, 0), "2");
    click(2, 0);
    press(Qt::Key_F2);
    type("5");
    press(Qt::Key_Delete);
    EXPECT_FALSE(isCellOpen());
    EXPECT_FALSE(widget().action(ListAction::SortAscending)->isEnabled());
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard(), "2\n");
    EXPECT_EQ(field.getNum(), 3);
}

TEST_F(ListWidgetTest, AsksForRowsAndNumbers)
{
    SoMFFloat field;
    field.setNum(1'000);
    show(field);
    answer(ListAction::GoTo, "2^9");
    EXPECT_EQ(view().currentRow(), 512);
    EXPECT_TRUE(view().hasFocus());
    EXPECT_TRUE(view().viewport()->rect().intersects(view().visualRect(index(512, 0))));
    answer(ListAction::GoTo, "1000");
    auto* line = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    ASSERT_TRUE(line) << "there is no such row";
    EXPECT_TRUE(line->property("illegal").toBool());
    press(Qt::Key_Escape);
    EXPECT_TRUE(view().hasFocus());
    EXPECT_EQ(view().currentRow(), 512);

    answer(ListAction::SetCount, "1003");
    EXPECT_EQ(field.getNum(), 1'003);
    EXPECT_EQ(view().model()->rowCount(), 1'003);
    answer(ListAction::SetCount, "-1");
    EXPECT_EQ(field.getNum(), 1'003);
    press(Qt::Key_Escape);
    answer(ListAction::SetCount, "0");
    EXPECT_EQ(field.getNum(), 0);
    EXPECT_EQ(services.done(), 2);
}

TEST_F(ListWidgetTest, TellsTheStatisticsOfTheColumn)
{
    SoMFVec3f field;
    fill(field, 5);
    show(field);
    const auto tells = [this](const char* text) {
        return support::passUntil([&] { return widget().footText().contains(text); });
    };
    EXPECT_TRUE(tells("x: min 0  \u00b7  max 4  \u00b7  mean 2"));
    click(1, 1);
    EXPECT_TRUE(tells("y: min 0.1"));
    click(1, 0);
    click(3, 0, Qt::ShiftModifier);
    EXPECT_TRUE(tells("3 cells selected  \u00b7  x: min 1  \u00b7  max 3  \u00b7  mean 2"));
    field.set1Value(2, SbVec3f(std::numeric_limits<float>::quiet_NaN(), 0, 0));
    EXPECT_TRUE(tells("mean 2  \u00b7  1 not-a-number"));
    field.set1Value(3, SbVec3f(std::numeric_limits<float>::infinity(), 0, 0));
    EXPECT_TRUE(tells("max inf"));
}

TEST_F(ListWidgetTest, StaysWithItsRowsAMillionLong)
{
    constexpr int kNum = 1'000'000;
    SoMFVec3f field;
    fill(field, kNum);
    show(field);
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(view().selectionModel()->selection().size(), 1);
    EXPECT_EQ(view().selectedCells().count(), 3 * kNum);
    EXPECT_TRUE(support::passUntil(
        [this] { return widget().footText().contains("max 999999  \u00b7  mean 499999.5"); }));
    answer(ListAction::Multiply, "-2");
    EXPECT_EQ(field[kNum - 1][0], -2 * (kNum - 1.0f));
    press(Qt::Key_Up, Qt::AltModifier | Qt::ShiftModifier);
    EXPECT_EQ(field[0][0], -2 * (kNum - 1.0f)) << "sorted";
    press(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(view().currentRow(), kNum - 1);
    press(Qt::Key_Home);
    type("5");
    press(Qt::Key_Return);
    EXPECT_EQ(field[kNum - 1][0], 5);
    EXPECT_EQ(shown(kNum - 1, 0), "5");
    EXPECT_EQ(services.done(), 3);
    for (int i = 0; i < 3; ++i)
        services.undo();
    EXPECT_EQ(field[kNum - 1], SbVec3f(kNum - 1, 0.1f, 0));
    EXPECT_EQ(field[0][0], 0);
}

} // namespace
