#pragma once

#include <kalmyr/base/SbVec.h>
#include <kalmyr/elements/SoState.h>

#include <span>

/// An array that belongs to the node that set it, which lives while traversed.
class KALMYR_API SoCoordinateElement final
    : public SoValueElement<SoCoordinateElement, std::span<const SbVec3f>> {
public:
    static int getStackIndex();
};
class KALMYR_API SoNormalElement final
    : public SoValueElement<SoNormalElement, std::span<const SbVec3f>> {
public:
    static int getStackIndex();
};
class KALMYR_API SoTextureCoordinateElement final
    : public SoValueElement<SoTextureCoordinateElement, std::span<const SbVec2f>> {
public:
    static int getStackIndex();
};

/// Values of SoBinding; 0 until a node sets one: PER_VERTEX_INDEXED where indices are given.
class KALMYR_API SoNormalBindingElement final : public SoValueElement<SoNormalBindingElement, int> {
public:
    static int getStackIndex();
};
class KALMYR_API SoTextureCoordinateBindingElement final
    : public SoValueElement<SoTextureCoordinateBindingElement, int> {
public:
    static int getStackIndex();
};
