#pragma once

#include "rendering/FrameBuilder.h"
#include "rendering/GLDevice.h"
#include "rendering/GLOutline.h"
#include "rendering/GLTargets.h"

#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbViewportRegion.h>
#include <kalmyr/rendering/RenderStatistics.h>

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

namespace kalmyr::detail {

struct GLFrameOptions {
    SbViewportRegion region;
    SbColorRGBA background;
    int transparencyType = 0;
    bool clearColor = false;
    bool clearDepth = false;
    PixelBox part; ///< of the window that the target holds; empty: all of it
};

/// From the window's pixels to the target's.
PixelBox inTarget(const PixelBox& box, const GLFrameOptions& options);

/// Submits one frame to the current context.
class GLRenderer {
public:
    GLRenderer(GLDevice& device, const Frame& frame, const GLFrameOptions& options,
               RenderStatistics& statistics);

    /// Called with the number of each layer, from 0 on, when it is drawn and its depths still
    /// stand.
    using LayerFunction = std::function<void(int layer)>;
    /// Clears, draws the background, then the items.
    void draw(const LayerFunction& layerDrawn = {});
    /// Draws what the items of a layer cover as SHADER_MASK has it, added to what is there.
    void drawMask(int layer);
    /// Draws the edges of all items of the frame over what is there, `width` pixels wide.
    void drawEdges(const OutlineStyle& style, float width);

private:
    struct Order {
        std::uint64_t key;
        std::uint32_t item;
    };
    struct DepthTriangle {
        float depth;
        std::uint32_t item;
        std::uint32_t triangle;
    };
    class Planner;
    using MaterialValues = std::array<std::array<float, 4>, NUM_MATERIAL_SLOTS>;
    enum class Blending { NONE, SCREEN_DOOR, BLEND, LAYER };
    enum class Purpose { SCENE, MASK, EDGES };

    void begin();
    void end();
    static void setBlendFunction();
    void setViewport(const SbViewportRegion& region) const;
    void clear();
    void makePlan(GLDrawPlan& plan);
    /// Moves and colours anew what changed in the frame; false when the plan has to be made anew.
    bool patchPlan(GLDrawPlan& plan) const;
    void splitLayer(int layer, std::vector<std::uint32_t>& opaque,
                    GLDrawPlan::Layer& planned) const;
    std::vector<std::uint32_t> inDrawingOrder(const std::vector<std::uint32_t>& items) const;
    static GLInstance instanceOf(const FrameItem& item, float look);
    void drawBatch(const GLDrawPlan& plan, const GLBatch& batch);
    static constexpr int kAllViews = -1;
    void drawLayer(const GLDrawPlan& plan, const GLDrawPlan::Layer& layer);
    void drawBatches(const GLDrawPlan& plan, const GLDrawPlan::Layer& layer, int view);
    void drawInOrder(const std::vector<std::uint32_t>& items);
    void drawOpaque(const std::vector<std::uint32_t>& items);
    void drawHiding(const std::vector<std::uint32_t>& items);
    void drawTransparent(std::vector<std::uint32_t> items);
    void drawByObjects(const std::vector<std::uint32_t>& items);
    void drawByTriangles(const std::vector<std::uint32_t>& items);
    void drawByPixels(const std::vector<std::uint32_t>& items);
    bool drawPart(const PixelBox& part, const SavedTarget& target,
                  const std::vector<std::uint32_t>& items);
    void drawNumbered(const std::vector<std::uint32_t>& items);
    void numberPrimitives(GLenum mode, GLsizei count);
    void forgetBindings();
    void collectTriangles(std::uint32_t item, std::vector<DepthTriangle>& triangles) const;
    void drawTriangleRuns(const std::vector<DepthTriangle>& triangles);
    std::uint64_t orderKey(const FrameItem& item) const;

    void drawItem(const FrameItem& item, bool withFaces = true);
    void drawFaces(const FrameItem& item, const GLGeometry& buffers);
    void drawSegments(const FrameItem& item, const GLGeometry& buffers, bool edges);
    void drawDashes(const FrameItem& item, const GLGeometry& buffers, bool edges);
    void drawContours(const FrameItem& item, const GLGeometry& buffers);
    void drawPoints(const FrameItem& item, const GLGeometry& buffers, bool allVertices);
    /// From the index buffer that is bound.
    void submit(const GLGeometry& buffers, GLenum mode, GLsizei count, std::size_t firstIndex);

    SoFogValues fogOn(const SoRenderAppearance& look) const;
    unsigned featuresOf(const FrameItem& item) const;
    /// Makes the program of those features current, and the look's texture; null, with nothing to
    /// be drawn, when the driver refuses. Takes from `features` what the look cannot have.
    const GLProgram* usePaint(const FrameItem& item, unsigned features);
    const GLProgram* useProgram(const SoRenderAppearance& look, unsigned& features);
    void bindVertexArray(GLuint vertexArray);
    bool prepare(const FrameItem& item, const GLGeometry& buffers, unsigned features);
    void setMatrices(const FrameItem& item, bool lit);
    MaterialValues materialValues(const SoRenderAppearance& look, unsigned features) const;
    void setMaterial(const SoRenderAppearance& look, unsigned features);
    void setFaces(const FrameItem& item);
    void setCulling(GLenum face);
    void setBlending(Blending blending, bool writeDepth);
    void bindView(int view);
    void bindSurroundings(const FrameItem& item, unsigned features);

    GLDevice& m_device;
    const Frame& m_frame;
    const GLFrameOptions& m_options;
    RenderStatistics& m_statistics;
    int m_type; ///< transparency type with an enumerator

    // What is set in the context, so that nothing is set twice.
    Blending m_blending = Blending::NONE;
    bool m_writesDepth = true;
    const GLProgram* m_program = nullptr;
    const SoRenderAppearance* m_material = nullptr;
    unsigned m_materialFeatures = 0;
    GLuint m_vertexArray = 0;
    GLuint m_texture = 0;
    GLenum m_culled = GL_NONE;
    bool m_mirrored = false;
    int m_view = -1;
    std::int64_t m_surroundings = -1;
    int m_clipPlanes = 0;
    Purpose m_purpose = Purpose::SCENE;
    unsigned m_peelingFeatures = 0; ///< that all programs have while pixels are sorted
    int m_numPrimitives = 0;        ///< drawn so far into the same layer of sorted pixels
    PixelBox m_part;                ///< of the window, that lies at 0 0
};

} // namespace kalmyr::detail
