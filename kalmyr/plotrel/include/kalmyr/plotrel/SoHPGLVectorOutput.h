#pragma once

#include <kalmyr/plotrel/SoVectorOutput.h>

#include <vector>

/// A plot in HP-GL/2.
///
/// Lengths are whole fortieths of a millimetre. Either in colours, for plotters and printers that
/// draw in a raster, or with the pens of a pen plotter.
class PLOTREL_API SoHPGLVectorOutput : public SoVectorOutput {
public:
    struct Pen {
        SbColor color;
        float width = 0.35f; ///< millimetres
    };
    static constexpr std::size_t kMaxPens = 255;

    SoHPGLVectorOutput();
    ~SoHPGLVectorOutput() override;

    /// On (at first): the file sets the colours of up to 255 pens to those of the drawing, or to
    /// such as come near when it has more, and lines have their widths. What comes later covers
    /// what came before.
    ///
    /// Off: everything is drawn with the pens of the table, the nearest in colour, and of several
    /// that are equally near the nearest in width; each pen is taken once. What is nearer to white
    /// than to any pen is left out, and so is the background. Pens cover nothing: only what can be
    /// seen is drawn. Meant for line drawings.
    void setColors(bool on) { m_colors = on; }
    bool hasColors() const { return m_colors; }

    /// From 1 to kMaxPens; other numbers, and widths that are no length above 0, are a broken
    /// contract and change nothing. The first one is pen 1. At first eight pens of 0.35 mm: black,
    /// red, green, yellow, blue, magenta, cyan, orange.
    void setPens(std::vector<Pen> pens);
    const std::vector<Pen>& getPens() const { return m_pens; }

    Abilities getAbilities() const override;

private:
    void write(const kalmyr::detail::VectorDrawing& drawing,
               kalmyr::detail::ByteWriter& bytes) override;

    bool m_colors = true;
    std::vector<Pen> m_pens;
};
