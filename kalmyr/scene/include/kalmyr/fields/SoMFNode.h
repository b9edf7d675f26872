#pragma once

#include <kalmyr/fields/SoMNodeField.h>

/// Any number of nodes.
class KALMYR_API SoMFNode final : public SoMNodeField {
    SO_FIELD_HEADER(SoMFNode)
    SO_FIELD_ASSIGNMENT(SoMFNode, SoMNodeField)
};
