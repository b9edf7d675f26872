#pragma once

#include <kalmyr/fields/SoMNodeField.h>

/// The parameters of a shader object, each a node with a name and a value.
class KALMYR_API SoMFUniformShaderParameter final : public SoMNodeField {
    SO_FIELD_HEADER(SoMFUniformShaderParameter)

    bool addShaderParameter(SoNode* parameter) { return addNode(parameter); }
    bool insertShaderParameter(SoNode* parameter, int index)
    {
        return insertNode(parameter, index);
    }
    bool removeShaderParameter(const SoNode* parameter) { return removeNode(parameter); }
    bool removeShaderParameter(int index) { return removeNode(index); }
};
