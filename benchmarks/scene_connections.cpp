// Fields that follow others: chains, fan-out and engines. One iteration changes the first value and
// reads the last. The argument is the number of fields or engines.

#include <kalmyr/base/SoRef.h>
#include <kalmyr/engines/SoCalculator.h>
#include <kalmyr/engines/SoInterpolate.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/io/SoDB.h>

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
BENCHMARK(calculator)->Arg(100)->Arg(10'000)->Arg(1'000'000);

} // namespace

BENCHMARK_MAIN();
