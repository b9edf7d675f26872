#pragma once

#include <kalmyr/core/SoEngineMacros.h>
#include <kalmyr/fields/SoValueFields.h>

#include <memory>
#include <string>
#include <vector>

namespace kalmyr::detail {
class CalculatorProgram;
}

/// Computes outputs from inputs by expressions.
///
/// Inputs are the numbers a to h and the vectors A to H, outputs the numbers oa to od and the
/// vectors oA to oD; ta to th and tA to tH keep values from one assignment to the next and, from
/// one value of multiple-value inputs to the next, begin at zero. `expression` holds assignments
/// separated by semicolons, done in order, such as "ta = a * 0.5; oA = vec3f(ta, sin(b), A[2])".
///
/// Operators by rising precedence: ?:, ||, &&, == !=, < <= > >=, + -, * / %, unary - and !. Vectors
/// may be added, subtracted, negated, compared for equality, multiplied and divided by a number;
/// A[0] to A[2] are components, which may be assigned to as well. Functions: sin cos tan asin acos
/// atan atan2 sinh cosh tanh sqrt pow exp log log10 ceil floor fabs fmod rand(n) cross dot length
/// normalize vec3f. Constants: M_PI M_E M_LN2 M_LN10 M_LOG2E M_LOG10E M_PI_2 M_PI_4 M_SQRT2
/// M_SQRT1_2 MAXFLOAT MINFLOAT. Numbers are doubles inside, single precision outside.
///
/// An expression with a fault is reported, with the place of the fault, when it is set, and leaves
/// the outputs as they are.
class KALMYR_API SoCalculator final : public SoEngine {
    SO_ENGINE_HEADER(SoCalculator)

public:
    SoCalculator();
    static void initClass();

    SoMFFloat a, b, c, d, e, f, g, h; ///< 0
    SoMFVec3f A, B, C, D, E, F, G, H; ///< 0 0 0
    SoMFString expression;            ///< empty
    SoMFFloat oa, ob, oc, od;         ///< outputs
    SoMFVec3f oA, oB, oC, oD;         ///< outputs

    void notify(SoNotification& notification) override;

    /// Returns the fault of the expression, with the place: "expected ')' at character 7"; empty
    /// when there is none.
    const SbString& getFault() const { return m_fault; }

protected:
    ~SoCalculator() override;
    void evaluate() override;

private:
    void compile();

    std::unique_ptr<kalmyr::detail::CalculatorProgram> m_program; ///< null for a faulty expression
    SbString m_fault;
};
