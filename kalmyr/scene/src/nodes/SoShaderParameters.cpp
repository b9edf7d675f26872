#include <kalmyr/nodes/SoShaderParameters.h>

#include <kalmyr/actions/SoCallbackAction.h>
#include <kalmyr/elements/SoTextureElement.h>

#include <algorithm>

namespace {

SoUniformValue named(const SoSFString& name, SoUniformValue::Kind kind, int components)
{
    SoUniformValue value;
    value.name = name.getValue().getString();
    value.kind = kind;
    value.components = components;
    return value;
}

/// The numbers of vectors, colours and matrices one after another.
template <class Number, class Field>
std::vector<Number> numbersOf(const Field& field, std::size_t components)
{
    const auto values = field.values();
    const auto* first = reinterpret_cast<const Number*>(values.data());
    return std::vector<Number>(first, first + values.size() * components);
}

} // namespace

SO_NODE_SOURCE(SoUniformShaderParameter)

SoUniformShaderParameter::SoUniformShaderParameter()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(name, (""));
}

SoUniformShaderParameter::~SoUniformShaderParameter() = default;

void SoUniformShaderParameter::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoUniformShaderParameter, SoNode, "UniformShaderParameter");
}

SO_NODE_SOURCE(SoShaderParameterFloat)

SoShaderParameterFloat::SoShaderParameterFloat()
{
    SO_NODE_CONSTRUCTOR(SoUniformShaderParameter);
    SO_ADD_EMPTY_FIELD(value);
}

SoShaderParameterFloat::~SoShaderParameterFloat() = default;

void SoShaderParameterFloat::initClass()
{
    SO_NODE_INIT_CLASS(SoShaderParameterFloat, SoUniformShaderParameter, "ShaderParameterFloat");
}

SoUniformValue SoShaderParameterFloat::getUniform() const
{
    SoUniformValue uniform = named(name, SoUniformValue::FLOATS, 1);
    uniform.floats = numbersOf<float>(value, 1);
    return uniform;
}

SO_NODE_SOURCE(SoShaderParameterVec2f)

SoShaderParameterVec2f::SoShaderParameterVec2f()
{
    SO_NODE_CONSTRUCTOR(SoUniformShaderParameter);
    SO_ADD_EMPTY_FIELD(value);
}

SoShaderParameterVec2f::~SoShaderParameterVec2f() = default;

void SoShaderParameterVec2f::initClass()
{
    SO_NODE_INIT_CLASS(SoShaderParameterVec2f, SoUniformShaderParameter, "ShaderParameterVec2f");
}

SoUniformValue SoShaderParameterVec2f::getUniform() const
{
    SoUniformValue uniform = named(name, SoUniformValue::FLOATS, 2);
    uniform.floats = numbersOf<float>(value, 2);
    return uniform;
}

SO_NODE_SOURCE(SoShaderParameterVec3f)

SoShaderParameterVec3f::SoShaderParameterVec3f()
{
    SO_NODE_CONSTRUCTOR(SoUniformShaderParameter);
    SO_ADD_EMPTY_FIELD(value);
}

SoShaderParameterVec3f::~SoShaderParameterVec3f() = default;

void SoShaderParameterVec3f::initClass()
{
    SO_NODE_INIT_CLASS(SoShaderParameterVec3f, SoUniformShaderParameter, "ShaderParameterVec3f");
}

SoUniformValue SoShaderParameterVec3f::getUniform() const
{
    SoUniformValue uniform = named(name, SoUniformValue::FLOATS, 3);
    uniform.floats = numbersOf<float>(value, 3);
    return uniform;
}

SO_NODE_SOURCE(SoShaderParameterVec4f)

SoShaderParameterVec4f::SoShaderParameterVec4f()
{
    SO_NODE_CONSTRUCTOR(SoUniformShaderParameter);
    SO_ADD_EMPTY_FIELD(value);
}

SoShaderParameterVec4f::~SoShaderParameterVec4f() = default;

void SoShaderParameterVec4f::initClass()
{
    SO_NODE_INIT_CLASS(SoShaderParameterVec4f, SoUniformShaderParameter, "ShaderParameterVec4f");
}

SoUniformValue SoShaderParameterVec4f::getUniform() const
{
    SoUniformValue uniform = named(name, SoUniformValue::FLOATS, 4);
    uniform.floats = numbersOf<float>(value, 4);
    return uniform;
}

SO_NODE_SOURCE(SoShaderParameterColor)

SoShaderParameterColor::SoShaderParameterColor()
{
    SO_NODE_CONSTRUCTOR(SoUniformShaderParameter);
    SO_ADD_EMPTY_FIELD(value);
}

SoShaderParameterColor::~SoShaderParameterColor() = default;

void SoShaderParameterColor::initClass()
{
    SO_NODE_INIT_CLASS(SoShaderParameterColor, SoUniformShaderParameter, "ShaderParameterColor");
}

SoUniformValue SoShaderParameterColor::getUniform() const
{
    SoUniformValue uniform = named(name, SoUniformValue::FLOATS, 3);
    uniform.floats = numbersOf<float>(value, 3);
    return uniform;
}

SO_NODE_SOURCE(SoShaderParameterInt32)

SoShaderParameterInt32::SoShaderParameterInt32()
{
    SO_NODE_CONSTRUCTOR(SoUniformShaderParameter);
    SO_ADD_EMPTY_FIELD(value);
}

SoShaderParameterInt32::~SoShaderParameterInt32() = default;

void SoShaderParameterInt32::initClass()
{
    SO_NODE_INIT_CLASS(SoShaderParameterInt32, SoUniformShaderParameter, "ShaderParameterInt32");
}

SoUniformValue SoShaderParameterInt32::getUniform() const
{
    SoUniformValue uniform = named(name, SoUniformValue::INTEGERS, 1);
    uniform.integers = numbersOf<std::int32_t>(value, 1);
    return uniform;
}

SO_NODE_SOURCE(SoShaderParameterVec2i32)

SoShaderParameterVec2i32::SoShaderParameterVec2i32()
{
    SO_NODE_CONSTRUCTOR(SoUniformShaderParameter);
    SO_ADD_EMPTY_FIELD(value);
}

SoShaderParameterVec2i32::~SoShaderParameterVec2i32() = default;

void SoShaderParameterVec2i32::initClass()
{
    SO_NODE_INIT_CLASS(SoShaderParameterVec2i32, SoUniformShaderParameter,
                       "ShaderParameterVec2i32");
}

SoUniformValue SoShaderParameterVec2i32::getUniform() const
{
    SoUniformValue uniform = named(name, SoUniformValue::INTEGERS, 2);
    uniform.integers = numbersOf<std::int32_t>(value, 2);
    return uniform;
}

SO_NODE_SOURCE(SoShaderParameterVec3i32)

SoShaderParameterVec3i32::SoShaderParameterVec3i32()
{
    SO_NODE_CONSTRUCTOR(SoUniformShaderParameter);
    SO_ADD_EMPTY_FIELD(value);
}

SoShaderParameterVec3i32::~SoShaderParameterVec3i32() = default;

void SoShaderParameterVec3i32::initClass()
{
    SO_NODE_INIT_CLASS(SoShaderParameterVec3i32, SoUniformShaderParameter,
                       "ShaderParameterVec3i32");
}

SoUniformValue SoShaderParameterVec3i32::getUniform() const
{
    SoUniformValue uniform = named(name, SoUniformValue::INTEGERS, 3);
    uniform.integers = numbersOf<std::int32_t>(value, 3);
    return uniform;
}

SO_NODE_SOURCE(SoShaderParameterVec4i32)

SoShaderParameterVec4i32::SoShaderParameterVec4i32()
{
    SO_NODE_CONSTRUCTOR(SoUniformShaderParameter);
    SO_ADD_EMPTY_FIELD(value);
}

SoShaderParameterVec4i32::~SoShaderParameterVec4i32() = default;

void SoShaderParameterVec4i32::initClass()
{
    SO_NODE_INIT_CLASS(SoShaderParameterVec4i32, SoUniformShaderParameter,
                       "ShaderParameterVec4i32");
}

SoUniformValue SoShaderParameterVec4i32::getUniform() const
{
    SoUniformValue uniform = named(name, SoUniformValue::INTEGERS, 4);
    uniform.integers = numbersOf<std::int32_t>(value, 4);
    return uniform;
}

SO_NODE_SOURCE(SoShaderParameterMatrix)

SoShaderParameterMatrix::SoShaderParameterMatrix()
{
    SO_NODE_CONSTRUCTOR(SoUniformShaderParameter);
    SO_ADD_EMPTY_FIELD(value);
}

SoShaderParameterMatrix::~SoShaderParameterMatrix() = default;

void SoShaderParameterMatrix::initClass()
{
    SO_NODE_INIT_CLASS(SoShaderParameterMatrix, SoUniformShaderParameter, "ShaderParameterMatrix");
}

SoUniformValue SoShaderParameterMatrix::getUniform() const
{
    SoUniformValue uniform = named(name, SoUniformValue::MATRICES, 16);
    uniform.floats = numbersOf<float>(value, 16);
    return uniform;
}

SO_NODE_SOURCE(SoShaderParameterTexture)

SoShaderParameterTexture::SoShaderParameterTexture()
{
    SO_NODE_CONSTRUCTOR(SoUniformShaderParameter);
    SO_ADD_EMPTY_FIELD(value);
}

SoShaderParameterTexture::~SoShaderParameterTexture() = default;

void SoShaderParameterTexture::initClass()
{
    SO_NODE_INIT_CLASS(SoShaderParameterTexture, SoUniformShaderParameter,
                       "ShaderParameterTexture");
}

SoUniformValue SoShaderParameterTexture::getUniform() const
{
    SoUniformValue uniform = named(name, SoUniformValue::TEXTURE, 1);
    SoNode* node = value.getValue();
    if (!node)
        return uniform;
    // In a state of its own, which shows what the node would set.
    SoCallbackAction action;
    node->doAction(&action);
    SoState* state = action.getState();
    if (const SoLookExtras* extras = SoLookExtrasElement::get(state);
        extras && !extras->stages.empty())
        uniform.texture = extras->stages[0];
    uniform.texture.texture = state->get<SoTextureElement>().value();
    return uniform;
}
