#pragma once

#include "PageMesh.h"
#include "PageRuns.h"

namespace kalmyr::detail {

/// Paints a drawing in the operators that PDF and PostScript share; a format adds the others.
class PagePainter {
public:
    virtual ~PagePainter() = default;

    /// Everything but the texts, clipped to the drawing's rectangle. One unit is a millimetre.
    void paint(const VectorDrawing& drawing);

protected:
    /// Without `meshes` the drawing must have nothing shaded.
    PagePainter(PageContent::Sink sink, bool twoColors, bool meshes)
        : m_content(std::move(sink), twoColors), m_meshes(meshes)
    {
    }
    PageContent& content() { return m_content; }

    virtual void paintGradient(const VectorDrawing& drawing) = 0;
    virtual void paintMesh(const PageMesh::Packed& mesh) = 0;
    /// Meshes that let light through, painted as one: where two triangles share a pixel it is
    /// painted once. The opacity is set already.
    virtual void paintClearMeshes(const std::vector<PageMesh::Packed>& meshes) = 0;
    /// Into the clip path that is set.
    virtual void paintImage(const VectorDrawing& drawing, std::int32_t image) = 0;
    /// Of what is painted from now on until the state is restored.
    virtual void setOpacity(std::uint8_t opacity) = 0;

private:
    void paintBackground(const VectorDrawing& drawing);
    void paintRun(const VectorDrawing& drawing, const PageRuns& all, const PageRun& run);
    void paintPolygons(const VectorDrawing& drawing, const PageRuns& all, const PageRun& run);
    void paintMeshes(const VectorDrawing& drawing, const PageRuns& all, const PageRun& run);
    void setClip(const VectorDrawing& drawing, const PageRuns& all, const PageRun& run);
    bool hasOneColor(const VectorDrawing& drawing, const PageRuns& all, const PageRun& run) const;
    void paintLines(const VectorDrawing& drawing, const PageRuns& all, const PageRun& run);
    void paintPoints(const VectorDrawing& drawing, const PageRuns& all, const PageRun& run);

    PageContent m_content;
    bool m_meshes;
};

/// A function from a place on the drawing's height, 0 at its top, to the background's colour, as a
/// dictionary of PDF or PostScript: linear pieces, stitched together.
std::string gradientFunction(const std::vector<VectorBackgroundStop>& stops);

} // namespace kalmyr::detail
