#pragma once

#include <kalmyr/plotrel/SoVectorOutput.h>

/// An enhanced metafile (EMF), a record of drawing calls, whose frame is the page. For a picture
/// without a border make the page as large as the drawing and the margin 0.
///
/// Lengths are whole hundredths of a millimetre. Polygons have edges in their own colour, as thin
/// as the reader can draw them.
class PLOTREL_API SoGDIVectorOutput : public SoVectorOutput {
public:
    SoGDIVectorOutput();
    ~SoGDIVectorOutput() override;

    Abilities getAbilities() const override;

private:
    void write(const kalmyr::detail::VectorDrawing& drawing,
               kalmyr::detail::ByteWriter& bytes) override;
};
