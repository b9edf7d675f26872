#pragma once

#include <kalmyr/core/SoEngineMacros.h>
#include <kalmyr/fields/SoMFEnum.h>
#include <kalmyr/fields/SoValueFields.h>

/// Combines truth values.
class KALMYR_API SoBoolOperation final : public SoEngine {
    SO_ENGINE_HEADER(SoBoolOperation)

public:
    /// The bits say what comes out for (a, b) = (0,0), (0,1), (1,0), (1,1), lowest first.
    enum Operation {
        CLEAR = 0,
        NOT_A_AND_NOT_B = 1,
        NOT_A_AND_B = 2,
        NOT_A = 3,
        A_AND_NOT_B = 4,
        NOT_B = 5,
        A_NOT_EQUALS_B = 6,
        NOT_A_OR_NOT_B = 7,
        A_AND_B = 8,
        A_EQUALS_B = 9,
        B = 10,
        NOT_A_OR_B = 11,
        A = 12,
        A_OR_NOT_B = 13,
        A_OR_B = 14,
        SET = 15
    };

    SoBoolOperation();
    static void initClass();

    SoMFBool a;         ///< FALSE
    SoMFBool b;         ///< FALSE
    SoMFEnum operation; ///< A
    SoMFBool output;    ///< output
    SoMFBool inverse;   ///< output: the opposite of `output`

protected:
    ~SoBoolOperation() override;
    void evaluate() override;
};
