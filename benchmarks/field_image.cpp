// The preview of an image of 4096 x 4096 pixels: after a change, fitted or at a screen pixel each;
// painted again; and scrolled. The counter is how many pixels a step converts.

#include "mirabo/extender/MrbFieldEdit.h"
#include "mirabo/plugins/defaults/ImageView.h"
#include "mirabo/plugins/defaults/ImageWidget.h"

#include <kalmyr/base/SbImage.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/io/SoDB.h>

#include <QApplication>
#include <QPixmap>
#include <QScrollBar>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

struct Preview {
    explicit Preview(int components)
    {
        constexpr int kSide = 4096;
        SbImage image(SbVec2i32(kSide, kSide), components);
        unsigned char* bytes = image.edit();
        for (std::size_t i = 0; i < image.getByteCount(); ++i)
            bytes[i] = static_cast<unsigned char>(i * 7);
        field.setValue(image);
        widget.reset(
            static_cast<ImageWidget*>(makeImageWidget(&edit, MrbFieldWidget::Form::Full, nullptr)));
        widget->resize(500, 500);
        widget->show();
        paint();
    }
    ImageView& view() const { return *widget->view(); }
    void paint() { picture = widget->grab(); }

    SoSFImage field;
    MrbFieldEdit edit{&field};
    std::unique_ptr<ImageWidget> widget;
    QPixmap picture;
};

/// Runs a step and a picture of it.
template <class Step>
void run(benchmark::State& state, Preview& preview, const Step& step)
{
    preview.paint();
    const long long before = preview.view().convertedPixels();
    for (auto _ : state) {
        step();
        preview.paint();
    }
    state.counters["pixels"] = static_cast<double>(preview.view().convertedPixels() - before)
                               / static_cast<double>(state.iterations());
}

void changeFitted(benchmark::State& state)
{
    Preview preview(static_cast<int>(state.range(0)));
    run(state, preview, [&preview] { preview.widget->showValue(); });
}

void changeOriginal(benchmark::State& state)
{
    Preview preview(static_cast<int>(state.range(0)));
    preview.view().setZoom(1);
    run(state, preview, [&preview] { preview.widget->showValue(); });
}

void repaint(benchmark::State& state)
{
    Preview preview(static_cast<int>(state.range(0)));
    run(state, preview, [] {});
}

void scrollOriginal(benchmark::State& state)
{
    Preview preview(static_cast<int>(state.range(0)));
    preview.view().setZoom(1);
    QScrollBar* bar = preview.view().verticalScrollBar();
    run(state, preview, [bar] { bar->setValue((bar->value() + 97) % bar->maximum()); });
}

BENCHMARK(changeFitted)->DenseRange(1, 4)->Unit(benchmark::kMillisecond);
BENCHMARK(changeOriginal)->Arg(4)->Unit(benchmark::kMillisecond);
BENCHMARK(repaint)->Arg(4)->Unit(benchmark::kMillisecond);
BENCHMARK(scrollOriginal)->Arg(4)->Unit(benchmark::kMillisecond);

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
