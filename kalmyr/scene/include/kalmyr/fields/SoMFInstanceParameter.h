#pragma once

#include <kalmyr/fields/SoMNodeField.h>

/// The parameters that differ from instance to instance of one shape, each a node with a name and
/// a list of values.
class KALMYR_API SoMFInstanceParameter final : public SoMNodeField {
    SO_FIELD_HEADER(SoMFInstanceParameter)
};
