// Times one change of a number that is being dragged in an editor, undo command included, with the
// whole tool open on a scene, and the bare field's assignment beside it.
//
// setField: the host's own assignment. dragNumber: MrbFieldEdit::change() inside a gesture, what of
// it is inside the call. dragPass: the same and the pass of the event loop after it, in which the
// tool shows the value. Its second argument is the number of objects in the scene.

#include "mirabo/extender/MrbFieldEdit.h"
#include "mirabo/extender/MrbServices.h"
#include "mirabo/launch/SoMiraboImpl.h"

#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoSphere.h>

#include <QApplication>
#include <QStandardPaths>

#include <benchmark/benchmark.h>

namespace {

/// The tool with a scene of spheres, the first of which is edited.
class Tool {
public:
    explicit Tool(const benchmark::State& state)
    {
        for (int i = 0; i < state.range(0); ++i) {
            auto* branch = new SoSeparator;
            branch->addChild(i == 0 ? sphere : new SoSphere);
            m_root->addChild(branch);
        }
        SoMiraboImpl::startNode(m_root.get(), nullptr);
        MrbServices::getInstance()->setSelectedNode(sphere);
        settle();
    }
    ~Tool() { SoMiraboImpl::stop(); }
    static void settle()
    {
        for (int pass = 0; pass < 20; ++pass)
            QCoreApplication::processEvents();
    }

    SoSphere* sphere = new SoSphere;

private:
    const SoRef<SoSeparator> m_root{new SoSeparator};
};

bool setTo(SoField& field, float value)
{
    static_cast<SoSFFloat&>(field).setValue(value);
    return true;
}

void setField(benchmark::State& state)
{
    const Tool tool(state);
    float value = 1;
    for (auto _ : state)
        tool.sphere->radius = value += 1;
}

void dragNumber(benchmark::State& state)
{
    const Tool tool(state);
    MrbFieldEdit edit(&tool.sphere->radius);
    edit.beginGesture();
    float value = 1;
    for (auto _ : state)
        edit.change([&](SoField& field) { return setTo(field, value += 1); });
}

void dragPass(benchmark::State& state)
{
    const Tool tool(state);
    MrbFieldEdit edit(&tool.sphere->radius);
    edit.beginGesture();
    float value = 1;
    for (auto _ : state) {
        edit.change([&](SoField& field) { return setTo(field, value += 1); });
        QCoreApplication::processEvents();
    }
}

BENCHMARK(setField)->Arg(10)->Arg(10'000);
BENCHMARK(dragNumber)->Arg(10)->Arg(10'000);
BENCHMARK(dragPass)->Arg(10)->Arg(10'000);

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    const QApplication application(argc, argv);
    SoDB::init();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
