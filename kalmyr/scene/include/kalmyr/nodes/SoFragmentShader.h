#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/nodes/SoShaderObject.h>

/// The fragment stage of a shader program. The text's main() sets `fragment`; standardColor() is
/// what the standard look would set.
class KALMYR_API SoFragmentShader : public SoShaderObject {
    SO_NODE_HEADER(SoFragmentShader)

public:
    SoFragmentShader();
    static void initClass();

    SoProgramValues::Stage getStage() const override { return SoProgramValues::FRAGMENT; }

protected:
    ~SoFragmentShader() override;
};
