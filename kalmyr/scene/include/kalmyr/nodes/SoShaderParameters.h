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

/// For float.
class KALMYR_API SoShaderParameterFloat : public SoUniformShaderParameter {
    SO_NODE_HEADER(SoShaderParameterFloat)

public:
    SoShaderParameterFloat();
    static void initClass();

    SoMFFloat value;

    SoUniformValue getUniform() const override;

protected:
    ~SoShaderParameterFloat() override;
};

/// For vec2.
class KALMYR_API SoShaderParameterVec2f : public SoUniformShaderParameter {
    SO_NODE_HEADER(SoShaderParameterVec2f)

public:
    SoShaderParameterVec2f();
    static void initClass();

    SoMFVec2f value;

    SoUniformValue getUniform() const override;

protected:
    ~SoShaderParameterVec2f() override;
};

/// For vec3.
class KALMYR_API SoShaderParameterVec3f : public SoUniformShaderParameter {
    SO_NODE_HEADER(SoShaderParameterVec3f)

public:
    SoShaderParameterVec3f();
    static void initClass();

    SoMFVec3f value;

    SoUniformValue getUniform() const override;

protected:
    ~SoShaderParameterVec3f() override;
};

/// For vec4.
class KALMYR_API SoShaderParameterVec4f : public SoUniformShaderParameter {
    SO_NODE_HEADER(SoShaderParameterVec4f)

public:
    SoShaderParameterVec4f();
    static void initClass();

    SoMFVec4f value;

    SoUniformValue getUniform() const override;

protected:
    ~SoShaderParameterVec4f() override;
};

/// For vec3.
class KALMYR_API SoShaderParameterColor : public SoUniformShaderParameter {
    SO_NODE_HEADER(SoShaderParameterColor)

public:
    SoShaderParameterColor();
    static void initClass();

    SoMFColor value;

    SoUniformValue getUniform() const override;

protected:
    ~SoShaderParameterColor() override;
};

/// For int, and bool.
class KALMYR_API SoShaderParameterInt32 : public SoUniformShaderParameter {
    SO_NODE_HEADER(SoShaderParameterInt32)

public:
    SoShaderParameterInt32();
    static void initClass();

    SoMFInt32 value;

    SoUniformValue getUniform() const override;

protected:
    ~SoShaderParameterInt32() override;
};

/// For ivec2.
class KALMYR_API SoShaderParameterVec2i32 : public SoUniformShaderParameter {
    SO_NODE_HEADER(SoShaderParameterVec2i32)

public:
    SoShaderParameterVec2i32();
    static void initClass();

    SoMFVec2i32 value;

    SoUniformValue getUniform() const override;

protected:
    ~SoShaderParameterVec2i32() override;
};

/// For ivec3.
class KALMYR_API SoShaderParameterVec3i32 : public SoUniformShaderParameter {
    SO_NODE_HEADER(SoShaderParameterVec3i32)

public:
    SoShaderParameterVec3i32();
    static void initClass();

    SoMFVec3i32 value;

    SoUniformValue getUniform() const override;

protected:
    ~SoShaderParameterVec3i32() override;
};

/// For ivec4.
class KALMYR_API SoShaderParameterVec4i32 : public SoUniformShaderParameter {
    SO_NODE_HEADER(SoShaderParameterVec4i32)

public:
    SoShaderParameterVec4i32();
    static void initClass();

    SoMFVec4i32 value;

    SoUniformValue getUniform() const override;

protected:
    ~SoShaderParameterVec4i32() override;
};

/// For mat4; a point p of the file's row form is transformed by matrix * p.
class KALMYR_API SoShaderParameterMatrix : public SoUniformShaderParameter {
    SO_NODE_HEADER(SoShaderParameterMatrix)

public:
    SoShaderParameterMatrix();
    static void initClass();

    SoMFMatrix value;

    SoUniformValue getUniform() const override;

protected:
    ~SoShaderParameterMatrix() override;
};

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
