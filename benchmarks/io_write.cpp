// Writing text beside the floor of plain to_chars, and the binary form beside copies of memory.
#include <kalmyr/base/SbNumber.h>
#include <kalmyr/base/SbTime.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoSlicedWrite.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTranslation.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace {

std::vector<SbVec3f> points(std::int64_t count)
{
    std::vector<SbVec3f> values(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < values.size(); ++i) {
        const float at = static_cast<float>(i) * 0.137f;
        values[i].setValue(at, std::sin(at), std::cos(at) * 3);
    }
    return values;
}

SoRef<SoSeparator> scene(std::int64_t count)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* node = new SoCoordinate3;
    node->point.setValues(0, points(count));
    root->addChild(node);
    return root;
}

std::string written(SoNode* root, bool binary, bool packed = false)
{
    SoOutput out;
    out.setBinary(binary);
    out.setCompression(packed, 1);
    out.setBuffer();
    SoWriteAction write(&out);
    write.apply(root);
    out.closeFile();
    return std::string(out.getText());
}

void writeFloor(benchmark::State& state)
{
    const auto values = points(state.range(0));
    std::size_t size = 0;
    for (auto _ : state) {
        std::string text;
        for (const SbVec3f& value : values) {
            for (int k = 0; k < 3; ++k) {
                SbNumber::appendFloat(text, value[k]);
                text += ' ';
            }
        }
        size = text.size();
        benchmark::DoNotOptimize(text.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

void writeText(benchmark::State& state)
{
    SoDB::init();
    const auto root = scene(state.range(0));
    std::size_t size = 0;
    for (auto _ : state)
        size = written(root.get(), false).size();
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

/// In slices of 3 ms, of many small nodes and of one long field.
void writeSliced(benchmark::State& state)
{
    SoDB::init();
    const auto root = scene(state.range(0));
    for (std::int64_t i = 0; i < state.range(0); ++i)
        root->addChild(new SoTranslation);
    double longest = 0;
    int numSlices = 0;
    for (auto _ : state) {
        SoOutput out;
        out.setBuffer();
        SoSlicedWrite write(root.get(), &out);
        SoSlicedWrite::State at = SoSlicedWrite::RUNNING;
        for (; at == SoSlicedWrite::RUNNING; ++numSlices) {
            const SbTime start = SbTime::monotonic();
            at = write.run(SbTime(0.003));
            longest = std::max(longest, (SbTime::monotonic() - start).getMsecValue());
        }
    }
    state.counters["longest slice (ms)"] = longest;
    state.counters["slices"] = benchmark::Counter(numSlices, benchmark::Counter::kAvgIterations);
}

void copyFloor(benchmark::State& state)
{
    const auto values = points(state.range(0));
    for (auto _ : state) {
        std::vector<SbVec3f> copy(values);
        benchmark::DoNotOptimize(copy.data());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * 12);
}

void read(const std::string& bytes)
{
    SoInput in;
    in.setBuffer(bytes.data(), bytes.size());
    const SoRef<SoSeparator> root(SoDB::readAll(&in));
    benchmark::DoNotOptimize(root.get());
}

void readBinary(benchmark::State& state)
{
    SoDB::init();
    const std::string bytes = written(scene(state.range(0)).get(), true);
    for (auto _ : state)
        read(bytes);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}

void readPackedText(benchmark::State& state)
{
    SoDB::init();
    const auto root = scene(state.range(0));
    const std::string bytes = written(root.get(), false, true);
    const std::size_t size = written(root.get(), false).size();
    for (auto _ : state)
        read(bytes);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

constexpr std::int64_t kSmall = 10'000, kMedium = 100'000, kLarge = 1'000'000;

BENCHMARK(writeFloor)->Arg(kSmall)->Arg(kMedium)->Arg(kLarge)->Unit(benchmark::kMillisecond);
BENCHMARK(writeText)->Arg(kSmall)->Arg(kMedium)->Arg(kLarge)->Unit(benchmark::kMillisecond);
BENCHMARK(writeSliced)->Arg(kSmall)->Arg(kMedium)->Arg(kLarge)->Unit(benchmark::kMillisecond);
BENCHMARK(copyFloor)->Arg(kSmall)->Arg(kMedium)->Arg(kLarge)->Unit(benchmark::kMillisecond);
BENCHMARK(readBinary)->Arg(kSmall)->Arg(kMedium)->Arg(kLarge)->Unit(benchmark::kMillisecond);
BENCHMARK(readPackedText)->Arg(kSmall)->Arg(kMedium)->Arg(kLarge)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
