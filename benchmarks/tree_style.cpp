// A new style of the tree's rows: what the user waits for after Apply, repaint included, with the
// root's rows open and with all rows open.

#include "TreeBench.h"

#include "mirabo/preferences/Settings.h"

#include <QSettings>
#include <QTemporaryDir>

using namespace treebench;

namespace {

enum Opened { RootOpen, AllOpen };
enum Change { Color, Family, Size, Show };

/// Turns a style from one look to another and back.
void turn(mirabo::TextStyle& style, Change change, bool on)
{
    switch (change) {
    case Color:
        style.color = on ? Qt::magenta : Qt::black;
        break;
    case Family:
        style.font.setFamily(on ? "DejaVu Serif" : "DejaVu Sans");
        break;
    case Size:
        style.font.setPointSize(on ? 30 : 10);
        break;
    case Show:
        style.show = !on;
        break;
    }
}

void applyStyle(benchmark::State& state, Change change, Opened opened)
{
    const QTemporaryDir folder;
    mirabo::releaseSettings();
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
    Watched watched(makeGraph(static_cast<int>(state.range(0)), Balanced));
    if (opened == AllOpen)
        watched.view.expandAll();
    settle();
    mirabo::StyleTable styles = mirabo::defaultTreeStyles();
    std::vector<double> after;
    bool on = false;
    for (auto _ : state) {
        on = !on;
        for (auto& [element, style] : styles.entries())
            turn(style, change, on);
        mirabo::writeStyles(mirabo::kTreeGroup, styles);
        const double inside = timed([&] { watched.view.setPreferences(); });
        after.push_back(timed([] { settle(); }));
        state.SetIterationTime((inside + after.back()) / 1000);
    }
    state.counters["settled_ms"] = median(after);
    mirabo::releaseSettings();
}

void sizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(1000)->Arg(1000000)->Iterations(20);
    benchmark->UseManualTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(applyStyle, color, Color, RootOpen)->Apply(sizes);
BENCHMARK_CAPTURE(applyStyle, color_all_open, Color, AllOpen)->Apply(sizes);
BENCHMARK_CAPTURE(applyStyle, family_all_open, Family, AllOpen)->Apply(sizes);
BENCHMARK_CAPTURE(applyStyle, size, Size, RootOpen)->Apply(sizes);
BENCHMARK_CAPTURE(applyStyle, size_all_open, Size, AllOpen)->Apply(sizes);
BENCHMARK_CAPTURE(applyStyle, show_all_open, Show, AllOpen)->Apply(sizes);

} // namespace

int main(int argc, char** argv)
{
    return run(argc, argv);
}
