#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>

/// Base of what computes the texture coordinates of the shapes that follow, in the present unit.
/// Stays in force until another function or given coordinates come.
class KALMYR_API SoTextureCoordinateFunction : public SoNode {
    SO_NODE_HEADER(SoTextureCoordinateFunction)

public:
    static void initClass();

protected:
    SoTextureCoordinateFunction();
    ~SoTextureCoordinateFunction() override;
};
