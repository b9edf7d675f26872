#include <kalmyr/engines/SoCalculator.h>

#include <kalmyr/base/SoDebugError.h>

#include "CalculatorProgram.h"
#include "EngineTools.h"

#include <algorithm>
#include <limits>

using kalmyr::detail::CalculatorProgram;
using kalmyr::detail::CalculatorVariables;

SO_ENGINE_SOURCE(SoCalculator)

SoCalculator::SoCalculator()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(a, (0.0f));
    SO_ADD_FIELD(b, (0.0f));
    SO_ADD_FIELD(c, (0.0f));
    SO_ADD_FIELD(d, (0.0f));
    SO_ADD_FIELD(e, (0.0f));
    SO_ADD_FIELD(f, (0.0f));
    SO_ADD_FIELD(g, (0.0f));
    SO_ADD_FIELD(h, (0.0f));
    SO_ADD_FIELD(A, ());
    SO_ADD_FIELD(B, ());
    SO_ADD_FIELD(C, ());
    SO_ADD_FIELD(D, ());
    SO_ADD_FIELD(E, ());
    SO_ADD_FIELD(F, ());
    SO_ADD_FIELD(G, ());
    SO_ADD_FIELD(H, ());
    SO_ADD_EMPTY_FIELD(expression);
    SO_ADD_OUTPUT(oa);
    SO_ADD_OUTPUT(ob);
    SO_ADD_OUTPUT(oc);
    SO_ADD_OUTPUT(od);
    SO_ADD_OUTPUT(oA);
    SO_ADD_OUTPUT(oB);
    SO_ADD_OUTPUT(oC);
    SO_ADD_OUTPUT(oD);
    compile();
}

SoCalculator::~SoCalculator() = default;

void SoCalculator::initClass()
{
    SO_ENGINE_INIT_CLASS(SoCalculator, SoEngine, "Calculator");
}

void SoCalculator::compile()
{
    // One text, so that a statement may run over several values of the field.
    std::string text;
    for (const SbString& line : expression.values())
        text.append(line.view()).append(";\n");
    std::string fault;
    std::size_t offset = 0;
    m_program = CalculatorProgram::parse(text, fault, offset);
    m_fault = SbString();
    if (!m_program)
        m_fault = SbString::format("%s at character %zu", fault.c_str(), offset + 1);
}

void SoCalculator::notify(SoNotification& notification)
{
    if (notification.container == this && notification.field == &expression) {
        compile();
        if (!m_program)
            SoDebugError::post("SoCalculator", "the expression cannot be computed: %s",
                               m_fault.getString());
    }
    SoEngine::notify(notification);
}

namespace {

constexpr int kNumInputs = CalculatorVariables::kNumInputs;
constexpr int kNumOutputs = CalculatorVariables::kNumOutputs;
constexpr int kFirst = CalculatorVariables::kFirstOutput;

struct Inputs {
    const SoMFFloat* numbers[kNumInputs];
    const SoMFVec3f* vectors[kNumInputs];

    /// How often the program runs: as often as the longest input that it uses has values.
    int count(const CalculatorProgram& program) const
    {
        int most = 1, least = std::numeric_limits<int>::max();
        const auto use = [&](int values) {
            most = std::max(most, values);
            least = std::min(least, values);
        };
        for (int i = 0; i < kNumInputs; ++i) {
            if (program.uses(false, i))
                use(numbers[i]->getNum());
            if (program.uses(true, i))
                use(vectors[i]->getNum());
        }
        return least == 0 ? 0 : most;
    }
    void load(CalculatorVariables& v, int n) const
    {
        for (std::size_t i = 0; i < kNumInputs; ++i) {
            v.numbers[i] = static_cast<double>(kalmyr::detail::valueAt(*numbers[i], n));
            const SbVec3f in = kalmyr::detail::valueAt(*vectors[i], n);
            for (int k = 0; k < 3; ++k)
                v.vectors[i][static_cast<std::size_t>(k)] = static_cast<double>(in[k]);
        }
    }
};

/// The arrays of the outputs that the program sets; null for the others.
struct Outputs {
    float* numbers[kNumOutputs];
    SbVec3f* vectors[kNumOutputs];

    void store(const CalculatorVariables& v, int n) const
    {
        for (std::size_t i = 0; i < kNumOutputs; ++i) {
            if (numbers[i])
                numbers[i][n] = static_cast<float>(v.numbers[kFirst + i]);
            for (int k = 0; vectors[i] && k < 3; ++k)
                vectors[i][n][k] =
                    static_cast<float>(v.vectors[kFirst + i][static_cast<std::size_t>(k)]);
        }
    }
};

} // namespace

void SoCalculator::evaluate()
{
    if (!m_program)
        return;
    const Inputs in{{&a, &b, &c, &d, &e, &f, &g, &h}, {&A, &B, &C, &D, &E, &F, &G, &H}};
    SoMFFloat* const numbers[] = {&oa, &ob, &oc, &od};
    SoMFVec3f* const vectors[] = {&oA, &oB, &oC, &oD};
    const int num = in.count(*m_program);
    Outputs out{};
    for (int i = 0; i < kNumOutputs; ++i) {
        if (m_program->sets(false, kFirst + i))
            out.numbers[i] = numbers[i]->setNumRaw(num);
        if (m_program->sets(true, kFirst + i))
            out.vectors[i] = vectors[i]->setNumRaw(num);
    }
    for (int n = 0; n < num; ++n) {
        CalculatorVariables v;
        in.load(v, n);
        m_program->run(v);
        out.store(v, n);
    }
}
