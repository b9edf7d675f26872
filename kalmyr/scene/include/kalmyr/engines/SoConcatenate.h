#pragma once

#include <kalmyr/engines/SoTypedEngine.h>

#include <array>

/// The values of ten inputs, one after the other.
class KALMYR_API SoConcatenate final : public SoTypedEngine {
public:
    static constexpr int kNumInputs = 10;

    /// Of values of that multiple-value type.
    explicit SoConcatenate(SoType multiple);
    SoConcatenate();
    static SoType getClassTypeId();
    SoType getTypeId() const override;
    static void initClass();

    std::array<SoMField*, kNumInputs> input{}; ///< input0 to input9, empty at first
    SoMField* output = nullptr;                ///< output

protected:
    ~SoConcatenate() override;
    void declareFields() override;
    void evaluate() override;
};
