// Fields that follow others: chains, fan-out and engines. One iteration changes the first value and
// reads the last. The argument is the number of fields or engines.

#include <kalmyr/base/SoRef.h>
#include <kalmyr/engines/SoCalculator.h>
#include <kalmyr/engines/SoInterpolate.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoSeparator.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

std::size_t countOf(const benchmark::State& state)
{
    return static_cast<std::size_t>(state.range(0));
}

void chainOfFields(benchmark::State& state)
{
    SoDB::init();
    std::vector<SoSFFloat> chain(countOf(state));
    for (std::size_t i = 1; i < chain.size(); ++i)
        chain[i].connectFrom(&chain[i - 1]);
    float value = 0;
    for (auto _ : state) {
        chain.front().setValue(value += 1);
        if (chain.back().getValue() != value)
            state.SkipWithError("the value did not arrive");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// Every second field is of another type.
void chainOfConversions(benchmark::State& state)
{
    SoDB::init();
    std::vector<SoSFFloat> floats(countOf(state) / 2);
    std::vector<SoSFInt32> ints(countOf(state) / 2);
    for (std::size_t i = 0; i < floats.size(); ++i) {
        ints[i].connectFrom(&floats[i]);
        if (i + 1 < floats.size())
            floats[i + 1].connectFrom(&ints[i]);
    }
    int value = 0;
    for (auto _ : state) {
        floats.front().setValue(static_cast<float>(value = (value + 1) % 1000));
        if (ints.back().getValue() != value)
            state.SkipWithError("the value did not arrive");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void fanOut(benchmark::State& state)
{
    SoDB::init();
    SoSFFloat master;
    std::vector<SoSFFloat> followers(countOf(state));
    for (SoSFFloat& f : followers)
        f.connectFrom(&master);
    float value = 0;
    for (auto _ : state) {
        master.setValue(value += 1);
        float sum = 0;
        for (const SoSFFloat& f : followers)
            sum += f.getValue();
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void chainOfEngines(benchmark::State& state)
{
    SoDB::init();
    std::vector<SoRef<SoInterpolateFloat>> chain;
    for (std::size_t i = 0; i < countOf(state); ++i) {
        chain.emplace_back(new SoInterpolateFloat);
        if (i > 0)
            chain[i]->alpha.connectFrom(&chain[i - 1]->output);
    }
    float value = 0;
    for (auto _ : state) {
        chain.front()->alpha.setValue(value += 1);
        benchmark::DoNotOptimize(chain.back()->output[0]);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// Engines that each take the one before twice. Iterations of the first benchmark build such a row
/// and let it go, those of the second change its head and read its end.
std::vector<SoRef<SoCalculator>> doubledRow(std::size_t count)
{
    std::vector<SoRef<SoCalculator>> row;
    row.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        row.emplace_back(new SoCalculator);
        row[i]->expression.setValue(SbString("oa = (a + b) / 2"));
        if (i > 0) {
            row[i]->a.connectFrom(&row[i - 1]->oa);
            row[i]->b.connectFrom(&row[i - 1]->oa);
        }
    }
    return row;
}

void buildDoubledRow(benchmark::State& state)
{
    SoDB::init();
    for (auto _ : state) {
        auto row = doubledRow(countOf(state));
        // Only the connections hold the engines now; the last one takes the others with it.
        row.erase(row.begin(), row.end() - 1);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void doubledRow(benchmark::State& state)
{
    SoDB::init();
    const auto row = doubledRow(countOf(state));
    float value = 0;
    for (auto _ : state) {
        row.front()->a = value += 1;
        row.front()->b = value;
        if (row.back()->oa[0] != value)
            state.SkipWithError("the value did not arrive");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

enum Order { FORTH, BACK, MIXED };

/// Reads routes of pairs of nodes first, then those that join the pairs to one chain. The second
/// argument is the order of the joints.
void readRoutes(benchmark::State& state)
{
    SoDB::init();
    const int count = static_cast<int>(state.range(0)) / 2;
    std::string text = "#VRML V2.0 utf8\n";
    const auto route = [&text](char from, int i, char to, int j) {
        text += std::string("ROUTE ") + from + std::to_string(i) + ".translation TO " + to
                + std::to_string(j) + ".translation\n";
    };
    for (int i = 0; i < count; ++i)
        for (const char node : {'A', 'B'})
            text += std::string("DEF ") + node + std::to_string(i) + " Transform { }\n";
    for (int i = 0; i < count; ++i)
        route('A', i, 'B', i);
    std::vector<int> joints(static_cast<std::size_t>(count) - 1);
    std::iota(joints.begin(), joints.end(), 0);
    if (state.range(1) == BACK)
        std::reverse(joints.begin(), joints.end());
    if (state.range(1) == MIXED)
        std::shuffle(joints.begin(), joints.end(), std::mt19937(1));
    for (const int i : joints)
        route('B', i, 'A', i + 1);
    for (auto _ : state) {
        SoInput in;
        in.setBuffer(text.data(), text.size());
        const SoRef<SoNode> root(SoDB::readAll(&in));
        if (!root)
            state.SkipWithError("the text was not read");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// The argument is the number of values that one expression goes through.
void calculator(benchmark::State& state)
{
    SoDB::init();
    const SoRef<SoCalculator> engine(new SoCalculator);
    engine->a.setNum(static_cast<int>(state.range(0)));
    engine->expression.setValue(SbString("ta = sin(a) * 2 + 1; oA = vec3f(ta, a / 2, -ta) * 0.5"));
    for (auto _ : state) {
        engine->a.touch();
        benchmark::DoNotOptimize(engine->oA.getValues());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(chainOfFields)->Arg(1'000)->Arg(10'000)->Arg(100'000);
BENCHMARK(chainOfConversions)->Arg(1'000)->Arg(10'000)->Arg(100'000);
BENCHMARK(fanOut)->Arg(1'000)->Arg(10'000)->Arg(100'000);
BENCHMARK(chainOfEngines)->Arg(100)->Arg(1'000)->Arg(100'000);
BENCHMARK(buildDoubledRow)->RangeMultiplier(4)->Range(1'000, 64'000)->Unit(benchmark::kMillisecond);
BENCHMARK(doubledRow)->RangeMultiplier(4)->Range(1'000, 64'000)->Unit(benchmark::kMillisecond);
BENCHMARK(readRoutes)
    ->ArgsProduct({{5'000, 20'000, 80'000}, {FORTH, BACK, MIXED}})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(calculator)->Arg(100)->Arg(10'000)->Arg(1'000'000);

} // namespace

BENCHMARK_MAIN();
