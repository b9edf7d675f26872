#pragma once

#include <kalmyr/engines/SoTypedEngine.h>

/// One value of many.
class KALMYR_API SoSelectOne final : public SoTypedEngine {
public:
    /// From values of that multiple-value type.
    explicit SoSelectOne(SoType multiple);
    SoSelectOne();
    static SoType getClassTypeId();
    SoType getTypeId() const override;
    static void initClass();

    SoSFInt32 index; ///< 0; one beyond the last value means the last, one below zero the first
    SoMField* input = nullptr;
    SoField* output = nullptr; ///< output, of the single-value type; kept while there is no value

protected:
    ~SoSelectOne() override;
    void declareFields() override;
    void evaluate() override;
};
