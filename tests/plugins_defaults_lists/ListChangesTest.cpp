#include "ListSupport.h"

#include <kalmyr/fields/SoMFEnum.h>
#include <kalmyr/fields/SoValueFields.h>

#include <array>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <random>
#include <vector>

namespace {

/// The actions on selected rows, and how they are taken back.
class ListChangesTest : public ListTest {
protected:
    template <class Field>
    static std::vector<typename Field::Value> valuesOf(const Field& field)
    {
        return {field.values().begin(), field.values().end()};
    }
    void select(std::initializer_list<RowRange> rows) { view().selectRows(RowRanges(rows)); }
    void run(ListAction action) { widget().action(action)->trigger(); }
    RowRanges selectedRows() { return view().selectedCells().rows(); }
};

using Ints = std::vector<std::int32_t>;

TEST_F(ListChangesTest, InsertsDeletesAndMovesRows)
{
    SoMFInt32 field;
    field.setValues(0, std::array{0, 1, 2, 3, 4});
    show(field);
    select({{1, 2}});
    run(ListAction::InsertBefore);
    EXPECT_EQ(valuesOf(field), (Ints{0, 0, 0, 1, 2, 3, 4}));
    EXPECT_EQ(selectedRows(), RowRanges({1, 2}));
    services.undo();
    widget().showValue();
    select({{1, 1}});
    run(ListAction::InsertAfter);
    EXPECT_EQ(valuesOf(field), (Ints{0, 1, 0, 2, 3, 4}));
    run(ListAction::Delete);
    EXPECT_EQ(valuesOf(field), (Ints{0, 1, 2, 3, 4}));

    select({{0, 0}, {2, 3}});
    run(ListAction::MoveUp);
    EXPECT_EQ(valuesOf(field), (Ints{0, 2, 3, 1, 4}));
    EXPECT_EQ(selectedRows(), RowRanges({0, 2}));
    select({{1, 1}, {4, 4}});
    run(ListAction::MoveDown);
    EXPECT_EQ(valuesOf(field), (Ints{0, 3, 2, 1, 4}));
    select({{0, 0}, {2, 2}, {4, 4}});
    run(ListAction::Delete);
    EXPECT_EQ(valuesOf(field), (Ints{3, 1}));
    EXPECT_EQ(services.done(), 5);
    while (services.done() > 0)
        services.undo();
    EXPECT_EQ(valuesOf(field), (Ints{0, 1, 2, 3, 4}));
}

TEST_F(ListChangesTest, SortsStablyBothWays)
{
    SoMFVec2f field;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    field.setValues(0, std::array{SbVec2f(2, 0), SbVec2f(nan, 1), SbVec2f(1, 2), SbVec2f(2, 3),
                                  SbVec2f(-1, 4), SbVec2f(1, 5)});
    const auto order = [&field] {
        std::vector<int> seconds;
        for (const SbVec2f& value : field.values())
            seconds.push_back(static_cast<int>(value[1]));
        return seconds;
    };
    show(field);
    click(0, 0);
    run(ListAction::SortAscending);
    EXPECT_EQ(order(), (std::vector{4, 2, 5, 0, 3, 1}));
    services.undo();
    run(ListAction::SortDescending);
    EXPECT_EQ(order(), (std::vector{0, 3, 2, 5, 4, 1})) << "what is no number is last";
    services.undo();
    select({{0, 0}, {3, 4}});
    run(ListAction::SortAscending);
    EXPECT_EQ(order(), (std::vector{4, 1, 2, 0, 3, 5})) << "the selected ones among themselves";
}

TEST_F(ListChangesTest, FillsSetsAddsAndMultipliesExactly)
{
    SoMFVec2f field;
    for (int i = 0; i < 5; ++i)
        field.set1Value(i, SbVec2f(0.1f * static_cast<float>(i + 1), -0.0f));
    show(field);
    click(1, 0);
    click(3, 0, Qt::ShiftModifier);
    run(ListAction::FillDown);
    EXPECT_EQ(field[3], SbVec2f(0.2f, 0));
    EXPECT_TRUE(std::signbit(field[3][1]));
    answer(ListAction::Multiply, "3");
    EXPECT_EQ(field[2][0], 0.2f * 3);
    answer(ListAction::Add, "1/4");
    EXPECT_EQ(field[2][0], static_cast<float>(static_cast<double>(0.2f * 3) + 0.25));
    answer(ListAction::Set, "nan");
    EXPECT_TRUE(std::isnan(field[1][0]) && std::isnan(field[3][0]));
    EXPECT_EQ(field[4][0], 0.5f);
    EXPECT_EQ(services.done(), 4);
    while (services.done() > 0)
        services.undo();
    EXPECT_EQ(field[3], SbVec2f(0.1f * 4, 0));
}

TEST_F(ListChangesTest, RefusesWholeWhatDoesNotFitEverywhere)
{
    SoMFUShort field;
    field.setValues(0, std::array<std::uint16_t, 3>{1, 5, 40'000});
    show(field);
    view().selectAll();
    answer(ListAction::Multiply, "2");
    auto* line = QApplication::focusWidget();
    EXPECT_TRUE(line->toolTip().contains("Row 2")) << line->toolTip().toStdString();
    press(Qt::Key_Escape);
    answer(ListAction::Set, "-1");
    press(Qt::Key_Escape);
    EXPECT_EQ(services.done(), 0);
    EXPECT_EQ(field[0], 1);
    answer(ListAction::Multiply, "0.5");
    EXPECT_EQ(field[1], 3) << "rounded";
}

TEST_F(ListChangesTest, CopiesAndPastesTheSameBits)
{
    SoMFVec3f field;
    field.setValues(0, std::array{SbVec3f(0.1f, -0.0f, 1e-45f), SbVec3f(3e38f, 1 / 3.0f, -7)});
    const std::string before = text(field);
    show(field);
    view().selectAll();
    press(Qt::Key_C, Qt::ControlModifier);
    SoMFVec3f other;
    show(other);
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(text(other), before);
    click(1, 0);
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(other.getNum(), 3) << "what goes beyond the end is added";
    EXPECT_EQ(other[1], field[0]);
    EXPECT_EQ(services.done(), 2);

    SoMFString strings, copies;
    int i = 0;
    for (const char* string : {"plain", "a\tb", "\"quoted\"", "two\nlines", "", " x "})
        strings.set1Value(i++, string);
    show(strings);
    view().selectAll();
    press(Qt::Key_C, Qt::ControlModifier);
    show(copies);
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(text(copies), text(strings));
}

TEST_F(ListChangesTest, CopiesOnlyWhatIsSelected)
{
    SoMFVec3f field;
    for (int i = 0; i < 4; ++i)
        field.set1Value(i, SbVec3f(static_cast<float>(i), 10, 20));
    show(field);
    click(0, 0);
    click(2, 1, Qt::ControlModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard(), "0\t\n\t10\n");
}

TEST_F(ListChangesTest, SetsNumbersThatDependOnEachOtherTogether)
{
    SoMFRotation field, copies;
    field.set1Value(0, SbRotation(SbVec3f(1, 2, 3), 0.7f));
    field.set1Value(1, SbRotation(SbVec3f(0, 0, -1), 3));
    show(field);
    view().selectAll();
    press(Qt::Key_C, Qt::ControlModifier);
    copies.setNum(2);
    show(copies);
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_V, Qt::ControlModifier);
    ASSERT_EQ(copies.getNum(), 2);
    EXPECT_TRUE(copies[0].equals(field[0], 1e-6f));
    EXPECT_TRUE(copies[1].equals(field[1], 1e-6f));
    show(field);
    view().selectAll();
    run(ListAction::FillDown);
    EXPECT_EQ(field[1], field[0]) << "to the bit";
    click(0, 3);
    click(1, 3, Qt::ShiftModifier);
    answer(ListAction::Multiply, "2");
    EXPECT_TRUE(field[1].equals(SbRotation(SbVec3f(1, 2, 3), 1.4f), 1e-6f));
}

TEST_F(ListChangesTest, GoesOnFromEachCellByItself)
{
    SoMFInt32 field;
    field.setValues(0, std::array{1, 2, 3});
    show(field);
    view().selectAll();
    answer(ListAction::Set, "*= 10");
    EXPECT_EQ(valuesOf(field), (Ints{10, 20, 30}));
}

TEST_F(ListChangesTest, PastesNothingOfATableWithABadCell)
{
    SoMFVec2f field;
    field.setNum(2);
    field.setDefault(true);
    show(field);
    click(0, 0);
    for (const auto& [pasted, problem] :
         {std::pair{"1\t2\n3\tx", "Row 2 of the clipboard: column y"},
          {"1\t2\t3", "Row 1 of the clipboard has 3"},
          {"1\t2\n\n", "Row 2 of the clipboard: column x"}}) {
        putOnClipboard(pasted);
        press(Qt::Key_V, Qt::ControlModifier);
        EXPECT_TRUE(widget().problemText().contains(problem))
            << widget().problemText().toStdString();
        EXPECT_EQ(services.done(), 0);
        EXPECT_TRUE(field.isDefault());
    }
    putOnClipboard("5");
    view().selectAll();
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(widget().problemText(), "");
    EXPECT_EQ(field[1], SbVec2f(5, 5)) << "one cell goes into all selected ones";
}

TEST_F(ListChangesTest, ChangesSeveralFieldsEachOnItsOwn)
{
    SoMFVec2f first, second;
    first.setValues(0, std::array{SbVec2f(1, 2), SbVec2f(3, 4), SbVec2f(5, 6)});
    second.setValues(0, std::array{SbVec2f(10, 20), SbVec2f(30, 40)});
    show(first, &second);
    click(1, 0);
    type("7");
    press(Qt::Key_Return);
    EXPECT_EQ(first[1], SbVec2f(7, 4));
    EXPECT_EQ(second[1], SbVec2f(7, 40));
    view().selectAll();
    answer(ListAction::Add, "1");
    EXPECT_EQ(second[0], SbVec2f(11, 21));
    run(ListAction::SortDescending);
    EXPECT_EQ(first[0], SbVec2f(8, 5));
    EXPECT_EQ(second[0], SbVec2f(11, 21));
    select({{2, 2}});
    run(ListAction::Delete);
    EXPECT_EQ(first.getNum(), 2);
    EXPECT_EQ(second.getNum(), 2) << "has no such row";
    EXPECT_EQ(services.done(), 4);
    while (services.done() > 0)
        services.undo();
    EXPECT_EQ(first[1], SbVec2f(3, 4));
    EXPECT_EQ(second[1], SbVec2f(30, 40));
}

TEST_F(ListChangesTest, AnyEditsAreTakenBackToTheBit)
{
    const auto storm = [this](SoMField& field, unsigned seed) {
        std::mt19937 random(seed);
        const auto below = [&random](int end) {
            return static_cast<int>(random() % static_cast<unsigned>(std::max(end, 1)));
        };
        field.setNum(6);
        std::vector<std::string> texts{text(field)};
        show(field);
        const int start = services.done();
        putOnClipboard("1\n0\n1");
        for (int step = 0; step < 40; ++step) {
            const int num = field.getNum();
            if (num > 0) {
                const int row = below(num);
                select({{row, row + below(num - row)}, {below(num), num / 2}});
            }
            const ListAction actions[] = {ListAction::InsertBefore,  ListAction::InsertAfter,
                                          ListAction::Append,        ListAction::Delete,
                                          ListAction::MoveUp,        ListAction::MoveDown,
                                          ListAction::SortAscending, ListAction::SortDescending,
                                          ListAction::FillDown,      ListAction::Paste};
            if (const int choice = below(12); choice < 10)
                run(actions[choice]);
            else
                answer(ListAction::Set, choice == 10 ? "1" : "0"), press(Qt::Key_Escape);
            ASSERT_EQ(view().model()->rowCount(), field.getNum());
            texts.resize(static_cast<std::size_t>(services.done() - start) + 1, text(field));
            ASSERT_EQ(texts.back(), text(field)) << "a change without a command, step " << step;
        }
        const std::string end = text(field);
        const int steps = services.done() - start;
        for (int i = steps; i > 0; --i) {
            services.undo();
            ASSERT_EQ(text(field), texts[static_cast<std::size_t>(i) - 1]);
        }
        for (int i = 0; i < steps; ++i)
            services.redo();
        EXPECT_EQ(text(field), end);
    };
    SoMFFloat floats;
    SoMFVec3d vectors;
    SoMFBool booleans;
    SoMFString strings;
    SoMFColorRGBA colors;
    SoMFUInt32 numbers;
    SoMFTime times;
    SoMFMatrix matrices;
    SoMFEnum enums;
    unsigned seed = 1;
    for (SoMField* field : {static_cast<SoMField*>(&floats), static_cast<SoMField*>(&vectors),
                            static_cast<SoMField*>(&booleans), static_cast<SoMField*>(&strings),
                            static_cast<SoMField*>(&colors), static_cast<SoMField*>(&numbers),
                            static_cast<SoMField*>(&times), static_cast<SoMField*>(&matrices),
                            static_cast<SoMField*>(&enums)})
        storm(*field, seed++);
}

} // namespace
