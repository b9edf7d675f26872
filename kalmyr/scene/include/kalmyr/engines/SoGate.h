#pragma once

#include <kalmyr/engines/SoTypedEngine.h>
#include <kalmyr/fields/SoSFTrigger.h>

/// Lets values through while it is open, or one at a trigger; otherwise keeps the last.
class KALMYR_API SoGate final : public SoTypedEngine {
public:
    /// For values of that multiple-value type.
    explicit SoGate(SoType multiple);
    SoGate();
    static SoType getClassTypeId();
    SoType getTypeId() const override;
    static void initClass();

    SoSFBool enable;            ///< FALSE: open or not
    SoSFTrigger trigger;        ///< lets the present value through
    SoMField* input = nullptr;  ///< of the chosen type
    SoMField* output = nullptr; ///< output, of the chosen type

protected:
    ~SoGate() override;
    void declareFields() override;
    void evaluate() override;
    bool isReacting() const override { return true; }
    void inputChanged(SoField* changed) override;

private:
    bool m_waiting = false; ///< the input has a value that belongs into the output
};
