#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFEnum.h>

/// Says how texture coordinates go to the vertices of the shapes that follow.
class KALMYR_API SoTextureCoordinateBinding : public SoNode {
    SO_NODE_HEADER(SoTextureCoordinateBinding)

public:
    enum Binding { DEFAULT = 1, PER_VERTEX = 7, PER_VERTEX_INDEXED = 8 };

    SoTextureCoordinateBinding();
    static void initClass();

    SoSFEnum value;

    void doAction(SoAction* action) override;

protected:
    ~SoTextureCoordinateBinding() override;
};
