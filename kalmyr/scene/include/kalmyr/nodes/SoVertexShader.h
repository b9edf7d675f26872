#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/nodes/SoShaderObject.h>

/// The vertex stage of a shader program. The text's main() is called for each vertex; it sets
/// gl_Position, or calls standardVertex(position, normal) with what the standard stage is to take.
class KALMYR_API SoVertexShader : public SoShaderObject {
    SO_NODE_HEADER(SoVertexShader)

public:
    SoVertexShader();
    static void initClass();

    SoProgramValues::Stage getStage() const override { return SoProgramValues::VERTEX; }

protected:
    ~SoVertexShader() override;
};
