#include <kalmyr/nodes/SoShaderProgram.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoLookExtras.h>
#include <kalmyr/nodes/SoShaderObject.h>
#include <kalmyr/nodes/SoShaderParameters.h>

SO_NODE_SOURCE(SoShaderProgram)

SoShaderProgram::SoShaderProgram()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_EMPTY_FIELD(shaderObject);
}

SoShaderProgram::~SoShaderProgram() = default;

void SoShaderProgram::initClass()
{
    SO_NODE_INIT_CLASS(SoShaderProgram, SoNode, "ShaderProgram");
}

void SoShaderProgram::doAction(SoAction* action)
{
    SoState* state = action->getState();
    auto values = std::make_shared<SoProgramValues>();
    values->name = std::string("ShaderProgram \"") + getName().getString() + '"';
    bool any = false;
    for (int i = 0; i < shaderObject.getNum(); ++i) {
        SoNode* node = shaderObject[i];
        if (!node || !node->isOfType(SoShaderObject::getClassTypeId()))
            continue;
        auto* object = static_cast<SoShaderObject*>(node);
        std::string text = object->getText();
        any = any || !text.empty();
        values->stages[object->getStage()] = {std::move(text), object->getLabel()};
        for (int p = 0; p < object->parameter.getNum(); ++p) {
            SoNode* parameter = object->parameter[p];
            if (parameter && parameter->isOfType(SoUniformShaderParameter::getClassTypeId()))
                values->uniforms.push_back(
                    static_cast<SoUniformShaderParameter*>(parameter)->getUniform());
        }
    }
    SoLookExtras& extras = SoLookExtrasElement::edit(state, this);
    extras.program = any ? values : nullptr;
}
