#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/nodes/SoShaderObject.h>

/// The geometry stage of a shader program.
class KALMYR_API SoGeometryShader : public SoShaderObject {
    SO_NODE_HEADER(SoGeometryShader)

public:
    SoGeometryShader();
    static void initClass();

    SoProgramValues::Stage getStage() const override { return SoProgramValues::GEOMETRY; }

protected:
    ~SoGeometryShader() override;
};
