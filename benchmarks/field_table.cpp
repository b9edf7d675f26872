// The table of a list's values: showing it, editing one value, following changes from outside, and
// selecting everything.
//
// showTable: from the making of the widget to the first picture. editOne: a cell set, undo command
// included; editOneFieldOnly is the part of the field itself. followChange: what the table does
// when the field has been changed by others. selectAll: Ctrl+A and the picture of it; the
// statistics of the column then come in pieces, of which statisticsPiece is the longest.

#include "mirabo/extender/MrbFieldEdit.h"
#include "mirabo/plugins/defaults/ListChanges.h"
#include "mirabo/plugins/defaults/ListStatistics.h"
#include "mirabo/plugins/defaults/ListView.h"
#include "mirabo/plugins/defaults/ListWidget.h"
#include "tests/support/TestServices.h"

#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/io/SoDB.h>

#include <QAction>
#include <QApplication>
#include <QScrollBar>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <memory>

namespace {

using Clock = std::chrono::steady_clock;

struct Table {
    explicit Table(benchmark::State& state)
    {
        const int num = static_cast<int>(state.range(0));
        field.setNum(num);
        SbVec3f* values = field.startEditing();
        for (int i = 0; i < num; ++i)
            values[i] = SbVec3f(static_cast<float>(i), 0.5f, -1);
        field.finishEditing();
    }
    void show()
    {
        widget.reset();
        widget.reset(
            static_cast<ListWidget*>(makeListWidget(&edit, MrbFieldWidget::Form::Full, nullptr)));
        widget->resize(500, 700);
        widget->show();
        paint();
    }
    void paint() { picture = widget->grab(); }
    /// Until the statistics are there; the longest piece in ms.
    double finish() const
    {
        double longest = 0;
        while (widget->statistics()->isRunning()) {
            const auto start = Clock::now();
            QCoreApplication::processEvents();
            longest = std::max(
                longest, std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        }
        return longest;
    }

    support::TestServices services;
    SoMFVec3f field;
    MrbFieldEdit edit{&field};
    std::unique_ptr<ListWidget> widget;
    QPixmap picture;
};

void showTable(benchmark::State& state)
{
    Table table(state);
    for (auto _ : state)
        table.show();
}

void scroll(benchmark::State& state)
{
    Table table(state);
    table.show();
    table.finish();
    QScrollBar* bar = table.widget->view()->verticalScrollBar();
    int step = 0;
    for (auto _ : state) {
        bar->setValue(static_cast<int>(++step * 7919LL % (bar->maximum() + 1)));
        table.paint();
    }
}

void editOne(benchmark::State& state)
{
    Table table(state);
    const auto cells = ListCells::of(table.field);
    ListChanges changes(table.edit, *cells);
    int step = 0;
    table.edit.beginGesture(); // one command, or the stack would grow with the steps
    for (auto _ : state)
        if (!changes.setCell(static_cast<int>(state.range(0)) / 2, 1, QString::number(++step)))
            state.SkipWithError("the cell is not set");
}

void editOneFieldOnly(benchmark::State& state)
{
    Table table(state);
    float step = 0;
    for (auto _ : state)
        table.field.set1Value(static_cast<int>(state.range(0)) / 2, SbVec3f(0, ++step, 0));
}

void followChange(benchmark::State& state)
{
    Table table(state);
    table.show();
    table.finish();
    float step = 0;
    for (auto _ : state) {
        table.field.set1Value(3, SbVec3f(0, ++step, 0));
        table.widget->showValue();
        table.paint();
    }
}

void selectAll(benchmark::State& state)
{
    Table table(state);
    table.show();
    table.finish();
    double longest = 0;
    for (auto _ : state) {
        table.widget->view()->selectAll();
        table.paint();
        state.PauseTiming();
        longest = std::max(longest, table.finish());
        table.widget->view()->clearSelection();
        table.finish();
        state.ResumeTiming();
    }
    state.counters["longest_piece_ms"] = longest;
}

void multiplyAll(benchmark::State& state)
{
    Table table(state);
    const auto cells = ListCells::of(table.field);
    ListChanges changes(table.edit, *cells);
    CellSelection selection;
    for (int i = 0; i < 3; ++i)
        selection.columns.emplace_back(RowRange{0, static_cast<int>(state.range(0)) - 1});
    for (auto _ : state) {
        if (!changes.multiply(selection, -1))
            state.SkipWithError("the values are not changed");
        state.PauseTiming();
        table.services.undo();
        state.ResumeTiming();
    }
}

void sortAll(benchmark::State& state)
{
    Table table(state);
    const auto cells = ListCells::of(table.field);
    ListChanges changes(table.edit, *cells);
    const RowRanges rows({0, static_cast<int>(state.range(0)) - 1});
    for (auto _ : state) {
        if (!changes.sort(rows, 0, true))
            state.SkipWithError("the values are not sorted");
        state.PauseTiming();
        table.services.undo();
        state.ResumeTiming();
    }
}

void copyAll(benchmark::State& state)
{
    Table table(state);
    table.show();
    table.widget->view()->selectAll();
    for (auto _ : state)
        table.widget->action(ListAction::Copy)->trigger();
}

void fillAll(benchmark::State& state)
{
    Table table(state);
    table.show();
    table.widget->view()->selectAll();
    for (auto _ : state) {
        table.widget->action(ListAction::FillDown)->trigger();
        state.PauseTiming();
        table.services.undo();
        state.ResumeTiming();
    }
}

#define LENGTHS ArgName("values")->RangeMultiplier(10)->Range(1'000, 1'000'000)
BENCHMARK(showTable)->LENGTHS->Unit(benchmark::kMillisecond);
BENCHMARK(scroll)->LENGTHS->Unit(benchmark::kMillisecond);
BENCHMARK(editOne)->LENGTHS->Unit(benchmark::kMicrosecond);
BENCHMARK(editOneFieldOnly)->LENGTHS->Unit(benchmark::kMicrosecond);
BENCHMARK(followChange)->LENGTHS->Unit(benchmark::kMillisecond);
BENCHMARK(selectAll)->LENGTHS->Unit(benchmark::kMillisecond);
BENCHMARK(multiplyAll)->LENGTHS->Unit(benchmark::kMillisecond);
BENCHMARK(copyAll)->LENGTHS->Unit(benchmark::kMillisecond);
BENCHMARK(fillAll)->LENGTHS->Unit(benchmark::kMillisecond);
BENCHMARK(sortAll)->LENGTHS->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    SoDB::init();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
