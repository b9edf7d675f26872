#include <kalmyr/nodes/SoShaderParameters.h>

#include <kalmyr/actions/SoCallbackAction.h>
#include <kalmyr/elements/SoTextureElement.h>

#include <cstdint>
#include <type_traits>

namespace {

SoUniformValue named(const SoSFString& name, SoUniformValue::Kind kind, int components)
{
    SoUniformValue value;
    value.name = name.getValue().getString();
    value.kind = kind;
    value.components = components;
    return value;
}

/// The numbers of the vectors, colours or matrices of a field, one after another.
template <class Number, class Field>
SoUniformValue uniformOf(const SoSFString& name, const Field& field)
{
    constexpr std::size_t kComponents = sizeof(typename Field::Value) / sizeof(Number);
    constexpr bool isWhole = std::is_same_v<Number, std::int32_t>;
    SoUniformValue uniform = named(name,
                                   isWhole             ? SoUniformValue::INTEGERS
                                   : kComponents == 16 ? SoUniformValue::MATRICES
                                                       : SoUniformValue::FLOATS,
                                   static_cast<int>(kComponents));
    const auto values = field.values();
    const auto* first = reinterpret_cast<const Number*>(values.data());
    if constexpr (isWhole)
        uniform.integers.assign(first, first + values.size() * kComponents);
    else
        uniform.floats.assign(first, first + values.size() * kComponents);
    return uniform;
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

#define KALMYR_SHADER_PARAMETER(Class, typeName, Number)                                           \
    SO_NODE_SOURCE(Class)                                                                          \
    Class::Class()                                                                                 \
    {                                                                                              \
        SO_NODE_CONSTRUCTOR(SoUniformShaderParameter);                                             \
        SO_ADD_EMPTY_FIELD(value);                                                                 \
    }                                                                                              \
    Class::~Class() = default;                                                                     \
    void Class::initClass()                                                                        \
    {                                                                                              \
        SO_NODE_INIT_CLASS(Class, SoUniformShaderParameter, typeName);                             \
    }                                                                                              \
    SoUniformValue Class::getUniform() const                                                       \
    {                                                                                              \
        return uniformOf<Number>(name, value);                                                     \
    }

KALMYR_SHADER_PARAMETER(SoShaderParameterFloat, "ShaderParameterFloat", float)
KALMYR_SHADER_PARAMETER(SoShaderParameterVec2f, "ShaderParameterVec2f", float)
KALMYR_SHADER_PARAMETER(SoShaderParameterVec3f, "ShaderParameterVec3f", float)
KALMYR_SHADER_PARAMETER(SoShaderParameterVec4f, "ShaderParameterVec4f", float)
KALMYR_SHADER_PARAMETER(SoShaderParameterColor, "ShaderParameterColor", float)
KALMYR_SHADER_PARAMETER(SoShaderParameterInt32, "ShaderParameterInt32", std::int32_t)
KALMYR_SHADER_PARAMETER(SoShaderParameterVec2i32, "ShaderParameterVec2i32", std::int32_t)
KALMYR_SHADER_PARAMETER(SoShaderParameterVec3i32, "ShaderParameterVec3i32", std::int32_t)
KALMYR_SHADER_PARAMETER(SoShaderParameterVec4i32, "ShaderParameterVec4i32", std::int32_t)
KALMYR_SHADER_PARAMETER(SoShaderParameterMatrix, "ShaderParameterMatrix", float)

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
