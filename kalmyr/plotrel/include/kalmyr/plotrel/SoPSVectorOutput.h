#pragma once

#include <kalmyr/plotrel/SoVectorOutput.h>

/// A file of PostScript: one page, with smooth shading and textures. Transparency is replaced by
/// mixed colours, and texts are outlines only.
class PLOTREL_API SoPSVectorOutput final : public SoVectorOutput {
public:
    SoPSVectorOutput() = default;

    /// For printers and programs of language level 2: no shading and no textures, but flat
    /// triangles and average colours. Off at first: level 3.
    void setLevel2(bool on) { m_level2 = on; }
    bool isLevel2() const { return m_level2; }

    Abilities getAbilities() const override;

private:
    void write(const kalmyr::detail::VectorDrawing& drawing,
               kalmyr::detail::ByteWriter& bytes) override;

    bool m_level2 = false;
};
