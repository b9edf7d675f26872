// Field lists: showing a node, and a watch under a storm of changes.
//
// WatchAtSixtyHertz: every field of 1,000 watched nodes changes once a frame; the counter is the
// share of one core that 60 such frames a second take, and how much of it goes without a watch.
// WatchAbsorbs: as many changes as can be made, the queue served every 16 ms; the counters are
// changes a second, how long the last value took to be shown, and how the heap grew.

#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoFieldWatch.h"
#include "mirabo/overview/SoNodeOverview.h"
#include "mirabo/overview/SoNodeOverviewList.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/sensors/SoSensorManager.h>

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// A node of 60 fields of several types.
class SixtyFields : public SoNode {
    SO_NODE_HEADER(SixtyFields)

public:
    SixtyFields()
    {
        SO_NODE_CONSTRUCTOR(SoNode);
        SbName name;
        for (int i = 0; i < 20; ++i) {
            add(vectors[i], "vector" + std::to_string(i), soFirstInstance);
            add(numbers[i], "number" + std::to_string(i), soFirstInstance);
            add(lists[i], "list" + std::to_string(i), soFirstInstance);
        }
    }
    static void initClass() { SO_NODE_INIT_CLASS(SixtyFields, SoNode, "SixtyFields"); }

    SoSFVec3f vectors[20];
    SoSFFloat numbers[20];
    SoMFFloat lists[20];

private:
    void add(SoField& field, const std::string& name, SoFieldData* data)
    {
        field.setContainer(this);
        if (data)
            data->addField(this, SbName(name), &field);
    }
};

SO_NODE_SOURCE(SixtyFields)

void pass()
{
    SoSensorManager::processDelayQueue(true);
    QCoreApplication::processEvents();
}

/// A watch of 1,000 fields, each of a node of its own, as in a window.
struct Watch {
    explicit Watch(bool filled)
    {
        nodes.resize(1000);
        SoNodeOverviewList source;
        for (SoRef<SoTranslation>& node : nodes) {
            node = new SoTranslation;
            source.setNode(node.get());
            if (filled)
                widget.addField(*source.fieldItem(0));
        }
        widget.resize(700, 500);
        widget.show();
        pass();
    }
    void change(int step)
    {
        for (const SoRef<SoTranslation>& node : nodes)
            node->translation.setValue(static_cast<float>(step), 1, 2);
    }
    bool shows(int step) const
    {
        const QString text = widget.fieldItem(999)->text(SoMiraboList::FieldValue);
        return text == QString::number(step) + " 1 2";
    }

    std::vector<SoRef<SoTranslation>> nodes;
    SoFieldWatch widget;
};

double cpuSeconds()
{
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

/// Process CPU time of `frames` frames, a core's share at 60 a second.
double shareOfCore(Watch& watch, int frames)
{
    const double start = cpuSeconds();
    for (int i = 0; i < frames; ++i) {
        watch.change(i);
        pass();
    }
    return (cpuSeconds() - start) / frames * 60;
}

void setNode(benchmark::State& state)
{
    const SoRef<SixtyFields> a(new SixtyFields);
    const SoRef<SixtyFields> b(new SixtyFields);
    SoNodeOverview panel;
    panel.resize(600, 800);
    panel.show();
    panel.setNode(a.get(), nullptr);
    pass();
    bool flip = false;
    for (auto _ : state) {
        panel.setNode(flip ? a.get() : b.get(), nullptr);
        flip = !flip;
        if (state.range(0))
            pass(); // painted as well
    }
}

void watchAtSixtyHertz(benchmark::State& state)
{
    Watch bare(false);
    Watch watch(true);
    shareOfCore(watch, 20); // warm
    constexpr int kFrames = 100;
    double with = 1;
    double without = 1;
    for (auto _ : state) {
        with = std::min(with, shareOfCore(watch, kFrames));
        without = std::min(without, shareOfCore(bare, kFrames));
    }
    state.counters["core_percent"] = with * 100;
    state.counters["without_watch_percent"] = without * 100;
}

void watchAbsorbs(benchmark::State& state)
{
    Watch watch(true);
    std::size_t changes = 0;
    double seconds = 0;
    double lag = 0;
    const auto heap = mallinfo2().uordblks;
    for (auto _ : state) {
        const auto start = Clock::now();
        auto served = start;
        int step = 0;
        while (secondsSince(start) < 2) {
            watch.change(++step);
            changes += 1000;
            if (secondsSince(served) > 0.016) {
                pass();
                served = Clock::now();
            }
        }
        seconds += secondsSince(start);
        const auto last = Clock::now();
        pass();
        lag = std::max(lag, secondsSince(last));
        if (!watch.shows(step))
            state.SkipWithError("the last value is not shown");
    }
    state.counters["changes_per_s"] = static_cast<double>(changes) / seconds;
    state.counters["last_value_ms"] = lag * 1000;
    state.counters["heap_growth_kb"] =
        (static_cast<double>(mallinfo2().uordblks) - static_cast<double>(heap)) / 1024;
}

void bigField(benchmark::State& state)
{
    const SoRef<SixtyFields> node(new SixtyFields);
    node->lists[0].setNum(static_cast<int>(state.range(0)));
    SoNodeOverview panel;
    panel.resize(600, 800);
    panel.show();
    for (auto _ : state) {
        panel.setNode(node.get(), nullptr);
        pass();
    }
}

BENCHMARK(setNode)->ArgName("painted")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(watchAtSixtyHertz)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(watchAbsorbs)->Iterations(2)->Unit(benchmark::kMillisecond);
BENCHMARK(bigField)->ArgName("values")->Arg(6)->Arg(10'000'000)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QTemporaryDir folder;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
    const QApplication application(argc, argv);
    SoDB::init();
    SixtyFields::initClass();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
