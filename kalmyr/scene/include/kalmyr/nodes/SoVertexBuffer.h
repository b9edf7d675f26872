#pragma once

#include <kalmyr/base/SbVec.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFBufferObject.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>

#include <cstdint>
#include <span>
#include <vector>

/// Takes coordinates, normals, texture coordinates or an input of shader programs for the vertex
/// shapes that follow from a buffer of 32-bit floating-point numbers in the machine's order. Nodes
/// that hold the same buffer share its memory; packed values are used where they are, others are
/// copied.
class KALMYR_API SoVertexBuffer : public SoNode {
    SO_NODE_HEADER(SoVertexBuffer)

public:
    enum Content {
        COORDINATES,         ///< of three components
        NORMALS,             ///< of three components
        TEXTURE_COORDINATES, ///< of two components, for the present unit
        INPUT                ///< of shader programs, as in SoVertexAttribute
    };

    SoVertexBuffer();
    static void initClass();

    SoSFBufferObject buffer;
    SoSFEnum content;
    SoSFString name;      ///< of an input
    SoSFInt32 components; ///< of an input, 1 to 4
    SoSFInt32 offset;     ///< bytes in front of the first value
    SoSFInt32 stride;     ///< bytes from one value to the next; 0: packed
    SoSFInt32 count;      ///< values; -1: as many as there are

    void doAction(SoAction* action) override;

protected:
    ~SoVertexBuffer() override;

private:
    std::span<const float> numbers(std::size_t components);

    std::vector<float> m_packed;  ///< where the buffer's values are not
    std::uint64_t m_packedId = 0; ///< changes of node and buffer that it is of
};
