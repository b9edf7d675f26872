#pragma once

#include <kalmyr/plotrel/SoVectorOutput.h>

/// A computer graphics metafile: binary encoding, version 1, one picture that shows the page.
///
/// Lengths are whole hundredths of a millimetre. Colours are direct, 8 bits a component.
class PLOTREL_API SoCGMVectorOutput : public SoVectorOutput {
public:
    SoCGMVectorOutput();
    ~SoCGMVectorOutput() override;

    Abilities getAbilities() const override;

private:
    void write(const kalmyr::detail::VectorDrawing& drawing,
               kalmyr::detail::ByteWriter& bytes) override;
};
