#include <kalmyr/core/SoCoreInit.h>
#include <kalmyr/engines/SoBoolOperation.h>
#include <kalmyr/engines/SoCalculator.h>
#include <kalmyr/engines/SoCompose.h>
#include <kalmyr/engines/SoConcatenate.h>
#include <kalmyr/engines/SoCounter.h>
#include <kalmyr/engines/SoDecompose.h>
#include <kalmyr/engines/SoElapsedTime.h>
#include <kalmyr/engines/SoEnginesInit.h>
#include <kalmyr/engines/SoGate.h>
#include <kalmyr/engines/SoGlobalField.h>
#include <kalmyr/engines/SoInterpolate.h>
#include <kalmyr/engines/SoOneShot.h>
#include <kalmyr/engines/SoOnOff.h>
#include <kalmyr/engines/SoSelectOne.h>
#include <kalmyr/engines/SoTimeCounter.h>
#include <kalmyr/engines/SoTriggerAny.h>
#include <kalmyr/fields/SoFieldsInit.h>
#include <kalmyr/sensors/SoFieldSensor.h>
#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/sensors/SoSensorsInit.h>

#include "FieldsSupport.h"
#include "support/ErrorGuard.h"

#include <cmath>
#include <memory>
#include <random>

#include <gtest/gtest.h>

using fieldtest::Listener;
using fieldtest::textOf;

namespace {

class Engines : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        kalmyr::initCore();
        kalmyr::initFields();
        kalmyr::initSensors();
        kalmyr::initEngines();
    }
};

/// An engine of time, its clock in the test's hand.
template <class Engine>
SoRef<Engine> withClock(SoSFTime& clock)
{
    const SoRef<Engine> engine(new Engine);
    clock.setValue(SbTime(100));
    EXPECT_TRUE(engine->timeIn.connectFrom(&clock));
    engine->timeIn.evaluate();
    return engine;
}

void setTime(SoSFTime& clock, double seconds)
{
    clock.setValue(SbTime(seconds));
}

TEST_F(Engines, EveryTypeMakesAnEngineWithOutputs)
{
    int made = 0;
    for (const SoType type : SoType::getAllDerivedFrom(SoEngine::getClassTypeId())) {
        const SoRef<SoEngine> engine(SoEngine::create(type));
        if (!engine)
            continue;
        ++made;
        EXPECT_EQ(engine->getTypeId(), type);
        EXPECT_FALSE(engine->getOutputs().empty()) << type.getName().getString();
        for (SoField* output : engine->getOutputs())
            EXPECT_EQ(engine->getOutput(engine->getOutputName(output)), output);
        SbString text;
        engine->get(text);
        EXPECT_EQ(text, "") << "a new engine has its defaults";
        const SoRef<SoEngine> copy(engine->copy());
        EXPECT_EQ(copy->getTypeId(), type);
    }
    EXPECT_EQ(made, 28);
}

TEST_F(Engines, ElapsedTimeRunsPausesAndRestarts)
{
    SoSFTime clock;
    const auto watch = withClock<SoElapsedTime>(clock);
    watch->reset.trigger();
    setTime(clock, 101.5);
    EXPECT_EQ(watch->timeOut.getValue(), SbTime(1.5));
    watch->pause.setValue(true);
    setTime(clock, 110);
    EXPECT_EQ(watch->timeOut.getValue(), SbTime(1.5));
    watch->pause.setValue(false);
    watch->speed.setValue(-2);
    setTime(clock, 110.5);
    EXPECT_EQ(watch->timeOut.getValue(), SbTime(0.5));
    watch->on.setValue(false);
    setTime(clock, 120);
    EXPECT_EQ(watch->timeOut.getValue(), SbTime(0.5));
    watch->speed.setValue(1);
    watch->on.setValue(true);
    setTime(clock, 121);
    EXPECT_EQ(watch->timeOut.getValue(), SbTime(1));
}

TEST_F(Engines, ElapsedTimeCountsTimeUnderTheSpeedOfThatTime)
{
    SoSFTime clock;
    const auto watch = withClock<SoElapsedTime>(clock);
    watch->reset.trigger();
    setTime(clock, 102); // nobody reads before the speed changes
    watch->speed.setValue(10);
    setTime(clock, 103);
    EXPECT_EQ(watch->timeOut.getValue(), SbTime(12));
}

TEST_F(Engines, OneShotRunsOnceForEachTrigger)
{
    SoSFTime clock;
    const auto shot = withClock<SoOneShot>(clock);
    Listener listener;
    shot->ramp.addAuditor(&listener, SoAuditor::SENSOR);
    setTime(clock, 101);
    EXPECT_EQ(listener.take(), 0) << "nothing happens before it is triggered";
    EXPECT_FALSE(shot->isActive.getValue());
    shot->duration.setValue(SbTime(2));
    shot->trigger.trigger();
    setTime(clock, 102);
    EXPECT_TRUE(shot->isActive.getValue());
    EXPECT_EQ(shot->ramp.getValue(), 0.5f);
    shot->trigger.trigger(); // not retriggerable
    setTime(clock, 102.5);
    EXPECT_EQ(shot->timeOut.getValue(), SbTime(1.5));
    setTime(clock, 110);
    EXPECT_FALSE(shot->isActive.getValue());
    EXPECT_EQ(shot->ramp.getValue(), 0);
    shot->flags.setValue(SoOneShot::HOLD_FINAL | SoOneShot::RETRIGGERABLE);
    shot->trigger.trigger();
    setTime(clock, 111);
    shot->trigger.trigger();
    setTime(clock, 112);
    EXPECT_EQ(shot->timeOut.getValue(), SbTime(1));
    setTime(clock, 120);
    EXPECT_EQ(shot->ramp.getValue(), 1) << "held";
    shot->disable.setValue(true);
    shot->trigger.trigger();
    EXPECT_FALSE(shot->isActive.getValue());
    shot->ramp.removeAuditor(&listener);
}

TEST_F(Engines, TimeCounterGoesThroughItsRange)
{
    SoSFTime clock;
    const auto counter = withClock<SoTimeCounter>(clock);
    counter->max.setValue(3);
    counter->syncIn.trigger();
    Listener cycles;
    counter->syncOut.addAuditor(&cycles, SoAuditor::SENSOR);
    std::string seen;
    for (int i = 0; i < 8; ++i) {
        setTime(clock, 100.125 + 0.25 * i);
        seen += std::to_string(counter->output.getValue());
    }
    EXPECT_EQ(seen, "01230123");
    EXPECT_EQ(cycles.take(), 1);
    counter->step.setValue(-1);
    counter->duty.setValues({3, 1}); // 3 of 6 parts for the first value, 1 for each other
    counter->syncIn.trigger();
    const double start = 100.125 + 0.25 * 7;
    setTime(clock, start + 0.49);
    EXPECT_EQ(counter->output.getValue(), 3);
    setTime(clock, start + 0.6);
    EXPECT_EQ(counter->output.getValue(), 2);
    counter->on.setValue(false);
    setTime(clock, start + 5);
    EXPECT_EQ(counter->output.getValue(), 2);
    counter->reset.setValue(1);
    EXPECT_EQ(counter->output.getValue(), 1);
    counter->syncOut.removeAuditor(&cycles);
}

TEST_F(Engines, CounterCountsTriggersRoundAndRound)
{
    const SoRef<SoCounter> counter(new SoCounter);
    Listener rounds;
    counter->syncOut.addAuditor(&rounds, SoAuditor::SENSOR);
    counter->max.setValue(5);
    counter->step.setValue(2);
    std::string seen;
    for (int i = 0; i < 6; ++i) {
        counter->trigger.trigger();
        seen += std::to_string(counter->output.getValue());
    }
    EXPECT_EQ(seen, "240240");
    EXPECT_EQ(rounds.take(), 2);
    counter->step.setValue(-1);
    counter->trigger.trigger();
    EXPECT_EQ(counter->output.getValue(), 5);
    counter->max.setValue(3);
    EXPECT_EQ(counter->output.getValue(), 3) << "the range moved away from it";
    counter->reset.setValue(100);
    EXPECT_EQ(counter->output.getValue(), 3);
    counter->syncOut.removeAuditor(&rounds);
}

TEST_F(Engines, TriggersPassThroughSwitchAndCounter)
{
    const SoRef<SoTriggerAny> any(new SoTriggerAny);
    const SoRef<SoCounter> counter(new SoCounter);
    const SoRef<SoOnOff> light(new SoOnOff);
    SoSFTrigger source;
    counter->max.setValue(100);
    ASSERT_TRUE(any->input0.connectFrom(&source));
    ASSERT_TRUE(any->input7.connectFrom(&source));
    ASSERT_TRUE(counter->trigger.connectFrom(&any->output));
    ASSERT_TRUE(light->toggle.connectFrom(&any->output));
    source.trigger();
    source.trigger();
    source.trigger();
    EXPECT_EQ(counter->output.getValue(), 3) << "one change passes once, however many ways it took";
    EXPECT_TRUE(light->isOn.getValue());
    any->input3.trigger();
    EXPECT_EQ(counter->output.getValue(), 4);
    EXPECT_TRUE(light->isOff.getValue());
    light->on.trigger();
    light->on.trigger();
    EXPECT_TRUE(light->isOn.getValue());
    light->off.trigger();
    EXPECT_FALSE(light->isOn.getValue());
}

TEST_F(Engines, GateKeepsTheValueThatCameLastWhileItWasOpen)
{
    const SoRef<SoGate> gate(new SoGate(SoMFVec3f::getClassTypeId()));
    auto& in = static_cast<SoMFVec3f&>(*gate->input);
    auto& out = static_cast<SoMFVec3f&>(*gate->output);
    in.setValue(1, 1, 1);
    EXPECT_EQ(out.getNum(), 0);
    gate->trigger.trigger();
    in.setValue(2, 2, 2);
    EXPECT_EQ(out[0], SbVec3f(1, 1, 1));
    gate->enable.setValue(true);
    in.setValue(3, 3, 3);
    gate->enable.setValue(false);
    in.setValue(4, 4, 4);
    EXPECT_EQ(out[0], SbVec3f(3, 3, 3)) << "not read while it was open";
}

TEST_F(Engines, SelectOneAndConcatenateTakeAnyType)
{
    const SoRef<SoConcatenate> both(new SoConcatenate(SoMFString::getClassTypeId()));
    const SoRef<SoSelectOne> one(new SoSelectOne(SoMFString::getClassTypeId()));
    both->input[0]->set("[ \"a\", \"b\" ]");
    both->input[9]->set("\"c\"");
    ASSERT_TRUE(one->input->connectFrom(both->output));
    std::string seen;
    for (const int index : {0, 1, 2, 3, -1}) {
        one->index.setValue(index);
        seen += textOf(*one->output);
    }
    EXPECT_EQ(seen, "\"a\"\"b\"\"c\"\"c\"\"a\"");

    const SoRef<SoConcatenate> bools(new SoConcatenate(SoMFBool::getClassTypeId()));
    bools->input[1]->set("[ TRUE, FALSE ]");
    bools->input[2]->set("TRUE");
    EXPECT_EQ(textOf(*bools->output), "[ TRUE, FALSE, TRUE ]");
}

TEST_F(Engines, TypesOfValuesChangeWhileNothingIsConnected)
{
    const SoRef<SoSelectOne> engine(new SoSelectOne);
    engine->type.setValue(SbName("MFColor"));
    EXPECT_EQ(engine->output->getTypeId(), SoSFColor::getClassTypeId());
    const SoRef<SoEngine> copy(engine->copy());
    EXPECT_EQ(copy->getField("input")->getTypeId(), SoMFColor::getClassTypeId());
    SoSFColor follower;
    ASSERT_TRUE(follower.connectFrom(engine->output));
    const auto errors = support::expectErrors();
    engine->type.setValue(SbName("MFFloat"));
    EXPECT_EQ(engine->type.getValue(), "MFColor");
    EXPECT_EQ(engine->output->getTypeId(), SoSFColor::getClassTypeId());
    const SoRef<SoGate> gate(new SoGate(SoSFFloat::getClassTypeId()));
    EXPECT_EQ(gate->input->getTypeId(), SoMFFloat::getClassTypeId()) << "no multiple-value type";
}

TEST_F(Engines, BoolOperationKnowsAllSixteen)
{
    const SoRef<SoBoolOperation> logic(new SoBoolOperation);
    logic->a.setValues({false, false, true, true});
    logic->b.setValues({false, true, false, true});
    const std::pair<const char*, const char*> cases[] = {
        {"CLEAR", "0000"},
        {"SET", "1111"},
        {"A", "0011"},
        {"NOT_A", "1100"},
        {"B", "0101"},
        {"NOT_B", "1010"},
        {"A_OR_B", "0111"},
        {"NOT_A_OR_B", "1101"},
        {"A_OR_NOT_B", "1011"},
        {"A_AND_B", "0001"},
        {"NOT_A_AND_B", "0100"},
        {"A_AND_NOT_B", "0010"},
        {"A_EQUALS_B", "1001"},
        {"A_NOT_EQUALS_B", "0110"},
        {"NOT_A_OR_NOT_B", "1110"},
        {"NOT_A_AND_NOT_B", "1000"},
    };
    for (const auto& [name, expected] : cases) {
        ASSERT_TRUE(logic->operation.set(name));
        std::string result, inverse;
        for (int i = 0; i < 4; ++i) {
            result += logic->output[i] ? '1' : '0';
            inverse += logic->inverse[i] ? '0' : '1';
        }
        EXPECT_EQ(result, expected) << name;
        EXPECT_EQ(inverse, expected) << name;
    }
}

TEST_F(Engines, ComposeAndDecomposeAreInverse)
{
    const SoRef<SoComposeMatrix> compose(new SoComposeMatrix);
    const SoRef<SoDecomposeMatrix> decompose(new SoDecomposeMatrix);
    ASSERT_TRUE(decompose->matrix.connectFrom(&compose->matrix));
    ASSERT_TRUE(decompose->center.connectFrom(&compose->center));
    std::mt19937 random(3);
    std::uniform_real_distribution<float> number(0.5f, 2);
    for (int i = 0; i < 50; ++i) {
        const SbVec3f t(number(random), number(random), number(random));
        const SbVec3f s(number(random), number(random), number(random));
        const SbRotation r(SbVec3f(number(random), number(random), -1), number(random));
        compose->translation.setValue(t);
        compose->scaleFactor.setValue(s);
        compose->rotation.setValue(r);
        compose->center.setValue(number(random), 0, 1);
        SbMatrix again;
        again.setTransform(decompose->translation[0], decompose->rotation[0],
                           decompose->scaleFactor[0], decompose->scaleOrientation[0],
                           compose->center[0]);
        EXPECT_TRUE(again.equals(compose->matrix[0], 1e-4f));
        EXPECT_TRUE(decompose->translation[0].equals(t, 1e-4f));
    }

    const SoRef<SoComposeVec3f> vectors(new SoComposeVec3f);
    const SoRef<SoDecomposeVec3f> parts(new SoDecomposeVec3f);
    ASSERT_TRUE(parts->vector.connectFrom(&vectors->vector));
    vectors->x.setValues({1, 2, 3});
    vectors->y.setValues({4, 5});
    EXPECT_EQ(textOf(vectors->vector), "[ 1 4 0, 2 5 0, 3 5 0 ]") << "the last serves all further";
    EXPECT_EQ(textOf(parts->y), "[ 4, 5, 5 ]");
    vectors->z.setNum(0);
    EXPECT_EQ(parts->x.getNum(), 0);

    const SoRef<SoComposeRotationFromTo> turn(new SoComposeRotationFromTo);
    const SoRef<SoDecomposeRotation> about(new SoDecomposeRotation);
    ASSERT_TRUE(about->rotation.connectFrom(&turn->rotation));
    turn->from.setValue(1, 0, 0);
    turn->to.setValue(0, 2, 0);
    EXPECT_TRUE(about->axis[0].equals(SbVec3f(0, 0, 1), 1e-6f));
    EXPECT_NEAR(about->angle[0], M_PI / 2, 1e-6);
}

TEST_F(Engines, InterpolateBetweenAnyNumberOfValues)
{
    const SoRef<SoInterpolateColor> colors(new SoInterpolateColor);
    colors->input0.setValues({SbColor(1, 0, 0), SbColor(0, 1, 0)});
    colors->input1.setValue(0, 0, 1);
    colors->alpha.setValue(0.25f);
    EXPECT_EQ(textOf(colors->output), "[ 0.75 0 0.25, 0 0.75 0.25 ]");
    const SoRef<SoInterpolateFloat> floats(new SoInterpolateFloat);
    floats->alpha.setValue(1.5f);
    EXPECT_EQ(floats->output[0], 1.5f) << "goes on along the line";
    const SoRef<SoInterpolateRotation> turns(new SoInterpolateRotation);
    turns->input1.setValue(SbRotation(SbVec3f(0, 1, 0), 2));
    turns->alpha.setValue(0.5f);
    EXPECT_TRUE(turns->output[0].equals(SbRotation(SbVec3f(0, 1, 0), 1), 1e-6f));
}

// ---- calculator

float calculated(const char* expression)
{
    const SoRef<SoCalculator> calculator(new SoCalculator);
    calculator->a.setValue(2);
    calculator->b.setValue(-3);
    calculator->A.setValue(1, 2, 3);
    calculator->B.setValue(0, 0, 2);
    calculator->expression.setValue(SbString(expression));
    EXPECT_EQ(calculator->getFault(), "") << expression;
    return calculator->oa[0];
}

TEST_F(Engines, CalculatorFollowsTheRulesOfArithmetic)
{
    const std::pair<const char*, double> cases[] = {
        {"oa = 1 + 2 * 3 - 4 / 8", 6.5},
        {"oa = (1 + 2) * -b", 9},
        {"oa = 10 - 4 - 3", 3},
        {"oa = 7 % 4 + -2", 1},
        {"oa = a < 3 && b < 0 || 0", 1},
        {"oa = !(a == 2)", 0},
        {"oa = a > 5 ? 1 : b >= -3 ? 2 : 3", 2},
        {"ta = 4; tb = sqrt(ta) ;oa=tb*ta", 8},
        {"oa = pow(a, 10) + atan2(1, 1) * 4 - M_PI", 1024},
        {"oa = cos(0) + fabs(b) + floor(2.7) + fmod(9, 5)", 10},
        {"oa = A[0] + A[2] * B[2]", 7},
        {"oa = dot(A, B) + length(B)", 8},
        {"oA = cross(A, B); oa = oA[0] * 10 + oA[1]", 38},
        {"tA = A + B * 2 - vec3f(1, 1, 1) / 2; oa = tA[2]", 6.5},
        {"tA[1] = 5; oa = tA[0] + tA[1]", 5},
        {"oa = length(normalize(A)) == 1 || A != B ? 3 : 4", 3},
        {"oa = 2 * A == A * 2 ? 1 : 0", 1},
        {"oa = .5e1 - 1.e0;", 4},
    };
    for (const auto& [expression, expected] : cases)
        EXPECT_NEAR(calculated(expression), expected, 1e-5) << expression;
}

TEST_F(Engines, CalculatorTakesManyValues)
{
    const SoRef<SoCalculator> calculator(new SoCalculator);
    calculator->a.setValues({1, 2, 3});
    calculator->A.setValues({SbVec3f(1, 0, 0), SbVec3f(0, 1, 0)});
    calculator->expression.setValues(
        {SbString("ta = ta + a"), SbString("oa = ta * 2; oB = A * a")});
    EXPECT_EQ(textOf(calculator->oa), "[ 2, 4, 6 ]") << "temporaries begin at zero each time";
    EXPECT_EQ(textOf(calculator->oB), "[ 1 0 0, 0 2 0, 0 3 0 ]");
    calculator->a.setNum(0);
    EXPECT_EQ(calculator->oa.getNum(), 0);
}

TEST_F(Engines, CalculatorReportsFaultsWithTheirPlace)
{
    const SoRef<SoCalculator> calculator(new SoCalculator);
    calculator->expression.setValue(SbString("oa = 5"));
    EXPECT_EQ(calculator->oa[0], 5);
    const std::string deep(100'000, '(');
    const std::pair<std::string, const char*> cases[] = {
        {"oa = (1 + 2", "expected ')'"},
        {"oa = 1 +", "expected a value"},
        {"a = 1", "expected an output"},
        {"oa = A", "expected a number at character 6"},
        {"oA = 1", "expected a vector"},
        {"oa = A * B", "operands"},
        {"oa = A[3]", "expected 0, 1 or 2"},
        {"oa = sine(1)", "'sine'"},
        {"oa = i", "'i'"},
        {"oa = 1 ? A : 2", "around ':'"},
        {"oa 3", "expected '='"},
        {"oa = 1 oa = 2", "expected ';'"},
        {"oa = " + deep, "nesting"},
        {"oa = dot(A, 1)", "expected a vector"},
        {"oa = " + std::string(100'000, '-') + "1", "nesting"},
    };
    for (const auto& [expression, part] : cases) {
        const auto errors = support::expectErrors();
        calculator->expression.setValue(SbString(expression));
        EXPECT_TRUE(errors.contains(part))
            << expression.substr(0, 40) << ": " << calculator->getFault();
        EXPECT_EQ(calculator->oa[0], 5) << "keeps what it had";
    }
}

// ---- global fields

TEST_F(Engines, RealTimeTicksOnlyForThoseWhoListen)
{
    SbTime next;
    ASSERT_FALSE(SoSensorManager::isTimerSensorPending(next));
    SoField* realTime = SoGlobalField::find("realTime");
    ASSERT_TRUE(realTime);
    EXPECT_EQ(SoGlobalField::create("realTime", SoSFTime::getClassTypeId()), realTime);
    const SbTime before = SoGlobalField::getRealTimeInterval();
    SoGlobalField::setRealTimeInterval(SbTime(0.001));
    {
        const SoRef<SoElapsedTime> watch(new SoElapsedTime);
        EXPECT_EQ(watch->timeIn.getConnectedField(), realTime);
        EXPECT_TRUE(watch->timeIn.isDefault());
        ASSERT_TRUE(SoSensorManager::isTimerSensorPending(next));
        Listener listener;
        watch->timeOut.addAuditor(&listener, SoAuditor::SENSOR);
        while (SbTime::getTimeOfDay() <= next) {
        }
        SoSensorManager::processTimerQueue();
        EXPECT_GE(listener.take(), 1);
        EXPECT_GT(watch->timeOut.getValue(), SbTime());
        watch->timeOut.removeAuditor(&listener);
        SoGlobalField::setRealTimeInterval(SbTime());
        EXPECT_FALSE(SoSensorManager::isTimerSensorPending(next));
        SoGlobalField::setRealTimeInterval(before);
        EXPECT_TRUE(SoSensorManager::isTimerSensorPending(next));
    }
    EXPECT_FALSE(SoSensorManager::isTimerSensorPending(next)) << "nobody listens any more";
    EXPECT_FALSE(SoGlobalField::remove("realTime"));
}

TEST_F(Engines, GlobalFieldsAreFoundByName)
{
    EXPECT_EQ(SoGlobalField::find("wind"), nullptr);
    SoField* wind = SoGlobalField::create("wind", SoSFVec3f::getClassTypeId());
    ASSERT_TRUE(wind);
    EXPECT_EQ(wind->getContainer()->getFieldName(wind), "wind");
    ASSERT_TRUE(wind->set("1 2 3"));
    SoSFVec3f follower;
    ASSERT_TRUE(follower.connectFrom(SoGlobalField::find("wind")));
    ASSERT_TRUE(SoGlobalField::rename("wind", "storm"));
    EXPECT_EQ(SoGlobalField::find("wind"), nullptr);
    EXPECT_EQ(SoGlobalField::find("storm"), wind);
    {
        const auto errors = support::expectErrors();
        EXPECT_EQ(SoGlobalField::create("storm", SoSFFloat::getClassTypeId()), nullptr);
        EXPECT_EQ(SoGlobalField::create("calm", SoEngine::getClassTypeId()), nullptr);
    }
    EXPECT_TRUE(SoGlobalField::remove("storm"));
    EXPECT_FALSE(follower.isConnected());
    EXPECT_EQ(follower.getValue(), SbVec3f(1, 2, 3));
}

} // namespace
