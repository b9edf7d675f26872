// Number lists of fields against the plain conversion of the same text (the floors), in one
// run.

#include <kalmyr/core/SoCoreInit.h>
#include <kalmyr/fields/SoFieldsInit.h>
#include <kalmyr/fields/SoValueFields.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include <benchmark/benchmark.h>

namespace {

constexpr int kNumbers = 12'000'000;

/// Coordinates as modellers write them, three a value.
const std::string& floatText()
{
    static const std::string text = [] {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> number(-100, 100);
        std::string s = "[\n";
        char buffer[64];
        for (int i = 0; i < kNumbers / 3; ++i) {
            const int n = std::snprintf(buffer, sizeof buffer, "  %.6g %.6g %.6g,\n",
                                        number(random), number(random), number(random));
            s.append(buffer, static_cast<std::size_t>(n));
        }
        return s + "]\n";
    }();
    return text;
}

/// Indices of triangles.
const std::string& indexText()
{
    static const std::string text = [] {
        std::mt19937 random(2);
        std::uniform_int_distribution<int> index(0, 500'000);
        std::string s = "[\n";
        char buffer[64];
        for (int i = 0; i < kNumbers / 4; ++i) {
            const int n = std::snprintf(buffer, sizeof buffer, "  %d, %d, %d, -1,\n", index(random),
                                        index(random), index(random));
            s.append(buffer, static_cast<std::size_t>(n));
        }
        return s + "]\n";
    }();
    return text;
}

bool startsNumber(char c)
{
    return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.';
}

template <class T>
double scan(const std::string& text)
{
    double sum = 0;
    const char* const end = text.data() + text.size();
    for (const char* p = text.data(); p < end;) {
        if (!startsNumber(*p)) {
            ++p;
            continue;
        }
        T value = 0;
        p = std::from_chars(p, end, value).ptr;
        sum += static_cast<double>(value);
    }
    return sum;
}

template <class T>
void floorOf(benchmark::State& state, const std::string& text)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(scan<T>(text));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

template <class Field>
void readField(benchmark::State& state, const std::string& text, int expected)
{
    kalmyr::initCore();
    kalmyr::initFields();
    for (auto _ : state) {
        Field field;
        SoTokenizer tokens(text.data(), text.size());
        SoFieldReader reader(tokens);
        if (!field.readValue(reader) || field.getNum() != expected) {
            state.SkipWithError("the list was not read");
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

template <class T>
void writeFloor(benchmark::State& state, const std::vector<T>& values)
{
    std::size_t bytes = 0;
    for (auto _ : state) {
        std::string out;
        char buffer[64];
        for (const T value : values) {
            char* const end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
            out.append(buffer, end);
            out += ' ';
        }
        bytes += out.size();
        benchmark::DoNotOptimize(out);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}

template <class Field>
void writeField(benchmark::State& state, const Field& field)
{
    std::size_t bytes = 0;
    for (auto _ : state) {
        std::string out;
        SoFieldWriter writer(out);
        field.writeValue(writer);
        bytes += out.size();
        benchmark::DoNotOptimize(out);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}

void readFloatsFloor(benchmark::State& state)
{
    floorOf<float>(state, floatText());
}
void readFloats(benchmark::State& state)
{
    readField<SoMFFloat>(state, floatText(), kNumbers);
}
void readPoints(benchmark::State& state)
{
    readField<SoMFVec3f>(state, floatText(), kNumbers / 3);
}
void readIndicesFloor(benchmark::State& state)
{
    floorOf<int>(state, indexText());
}
void readIndices(benchmark::State& state)
{
    readField<SoMFInt32>(state, indexText(), kNumbers);
}

const SoMFVec3f& points()
{
    static const SoMFVec3f* const field = [] {
        kalmyr::initCore();
        kalmyr::initFields();
        auto* made = new SoMFVec3f;
        SoTokenizer tokens(floatText().data(), floatText().size());
        SoFieldReader reader(tokens);
        made->readValue(reader);
        return made;
    }();
    return *field;
}
void writePointsFloor(benchmark::State& state)
{
    std::vector<float> values;
    for (const SbVec3f& p : points().values()) {
        values.insert(values.end(), p.getValue(), p.getValue() + 3);
    }
    writeFloor(state, values);
}
void writePoints(benchmark::State& state)
{
    writeField(state, points());
}

void writeRotation(benchmark::State& state)
{
    kalmyr::initCore();
    kalmyr::initFields();
    SoSFRotation field;
    field.setValue(SbVec3f(1, 2, 3), 1.234f);
    writeField(state, field);
}

void setFloat(benchmark::State& state)
{
    SoSFFloat field;
    float value = 0;
    for (auto _ : state) {
        field.setValue(value += 1);
        benchmark::DoNotOptimize(field.getValue());
    }
}

/// Argument: number of values. A bulk edit with one notification; no text exists.
void editManyFloats(benchmark::State& state)
{
    SoMFFloat field;
    field.setNum(static_cast<int>(state.range(0)));
    float value = 0;
    for (auto _ : state) {
        float* values = field.startEditing();
        values[0] = value += 1;
        field.finishEditing();
        benchmark::DoNotOptimize(field.getValues());
    }
}

BENCHMARK(editManyFloats)->Arg(100'000)->Arg(1'000'000)->Arg(10'000'000);
BENCHMARK(readFloatsFloor)->Unit(benchmark::kMillisecond);
BENCHMARK(readFloats)->Unit(benchmark::kMillisecond);
BENCHMARK(readPoints)->Unit(benchmark::kMillisecond);
BENCHMARK(readIndicesFloor)->Unit(benchmark::kMillisecond);
BENCHMARK(readIndices)->Unit(benchmark::kMillisecond);
BENCHMARK(writePointsFloor)->Unit(benchmark::kMillisecond);
BENCHMARK(writePoints)->Unit(benchmark::kMillisecond);
BENCHMARK(writeRotation);
BENCHMARK(setFloat);

} // namespace

BENCHMARK_MAIN();
