#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/shapes/ShapeSource.h>
#include <kalmyr/shapes/SoShape.h>

class SoVertexProperty;

/// Base of shapes made of given positions: those of the vertexProperty, or of the traversal state.
class KALMYR_API SoVertexShape : public SoShape {
    SO_NODE_HEADER(SoVertexShape)

public:
    static void initClass();

    SoSFNode vertexProperty; ///< a SoVertexProperty, or null

protected:
    SoVertexShape();
    ~SoVertexShape() override;

    /// The parts of the vertex data that a shape uses.
    struct Indices {
        std::span<const std::int32_t> material;
        std::span<const std::int32_t> normal;
        std::span<const std::int32_t> texCoord;
        bool indexed = false;
    };
    /// Positions and attributes for the builders; spans point to nodes and to `packedColors`.
    void fillInput(SoState* state, const Indices& indices, kalmyr::VertexInput& input,
                   std::vector<std::uint32_t>& packedColors) const;
    /// The same for the source of a shape, without the colours that it does not want.
    void fillInput(SoState* state, const Indices& indices, kalmyr::ShapeSource& source) const;
    /// The shape hints of the state, and whether texture coordinates are needed.
    static void fillHints(SoState* state, kalmyr::FaceInput& input);
    std::uint64_t stateKey(SoState* state) const override;

private:
    /// Without colours for null: only their number.
    void fillInput(SoState* state, const Indices& indices, kalmyr::VertexInput& input,
                   std::vector<std::uint32_t>* packedColors) const;
    const SoVertexProperty* getProperty() const;
};
