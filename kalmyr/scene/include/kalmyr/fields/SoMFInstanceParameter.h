#pragma once

#include <kalmyr/fields/SoMFNode.h>

/// The parameters that differ from instance to instance of one shape, each a node with a name and
/// a list of values.
class KALMYR_API SoMFInstanceParameter final : public SoMFNode {
    SO_FIELD_HEADER(SoMFInstanceParameter)
};
