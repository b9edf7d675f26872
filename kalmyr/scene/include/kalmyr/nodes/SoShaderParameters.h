#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/elements/SoLookExtras.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>

/// \file
/// Values for the uniforms of shader programs. A field with several values is for an array.

/// Base: the value of the uniform that is called `name`. A name that the program does not have is
/// no mistake.
class KALMYR_API SoUniformShaderParameter : public SoNode {
    SO_NODE_HEADER(SoUniformShaderParameter)

public:
    static void initClass();

    SoSFString name;

    virtual SoUniformValue getUniform() const = 0;
    bool affectsState() const override { return false; }

protected:
    SoUniformShaderParameter();
    ~SoUniformShaderParameter() override;
};

#define KALMYR_SHADER_PARAMETER(Class, Field)                                                      \
    class KALMYR_API Class : public SoUniformShaderParameter {                                     \
        SO_NODE_HEADER(Class)                                                                      \
                                                                                                   \
    public:                                                                                        \
        Class();                                                                                   \
        static void initClass();                                                                   \
        Field value;                                                                               \
        SoUniformValue getUniform() const override;                                                \
                                                                                                   \
    protected:                                                                                     \
        ~Class() override;                                                                         \
    };

/// For float.
KALMYR_SHADER_PARAMETER(SoShaderParameterFloat, SoMFFloat)
/// For vec2.
KALMYR_SHADER_PARAMETER(SoShaderParameterVec2f, SoMFVec2f)
/// For vec3.
KALMYR_SHADER_PARAMETER(SoShaderParameterVec3f, SoMFVec3f)
/// For vec4.
KALMYR_SHADER_PARAMETER(SoShaderParameterVec4f, SoMFVec4f)
/// For vec3.
KALMYR_SHADER_PARAMETER(SoShaderParameterColor, SoMFColor)
/// For int, and bool.
KALMYR_SHADER_PARAMETER(SoShaderParameterInt32, SoMFInt32)
/// For ivec2.
KALMYR_SHADER_PARAMETER(SoShaderParameterVec2i32, SoMFVec2i32)
/// For ivec3.
KALMYR_SHADER_PARAMETER(SoShaderParameterVec3i32, SoMFVec3i32)
/// For ivec4.
KALMYR_SHADER_PARAMETER(SoShaderParameterVec4i32, SoMFVec4i32)
/// For mat4; a point p of the file's row form is transformed by matrix * p.
KALMYR_SHADER_PARAMETER(SoShaderParameterMatrix, SoMFMatrix)

#undef KALMYR_SHADER_PARAMETER

/// For sampler2D, sampler3D and samplerCube: what a texture node shows.
class KALMYR_API SoShaderParameterTexture : public SoUniformShaderParameter {
    SO_NODE_HEADER(SoShaderParameterTexture)

public:
    SoShaderParameterTexture();
    static void initClass();

    SoSFNode value; ///< Texture2, Texture3, TextureCubeMap, or a texture of VRML97

    SoUniformValue getUniform() const override;

protected:
    ~SoShaderParameterTexture() override;
};
