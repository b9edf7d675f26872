#pragma once

#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbRotation.h>
#include <kalmyr/shapes/SoGeometry.h>

#include <vector>

namespace kalmyr::detail {

template <class Field, class Values>
void fill(Field& field, const Values& values)
{
    field.setValues(0, {values.data(), values.size()});
}

/// A light of the other family with what all kinds of lights have.
template <class Node, class Light>
Node* lightLike(const Light& light)
{
    auto* made = new Node;
    made->on = light.on.getValue();
    made->intensity = light.intensity.getValue();
    made->color = light.color.getValue();
    return made;
}

/// Colours of the vertices, without their transparency.
inline std::vector<SbColor> colorsOf(const SoGeometry& geometry)
{
    std::vector<SbColor> colors(geometry.colors.size());
    float ignored = 0;
    for (std::size_t i = 0; i < colors.size(); ++i)
        colors[i].setPackedValue(geometry.colors[i], ignored);
    return colors;
}

/// Sets translation, rotation, scale and its orientation, as far as the matrix has them.
template <class Node, class ScaleField>
void setTransform(Node& node, ScaleField& scaleField, const SbMatrix& matrix)
{
    SbVec3f translation, scale;
    SbRotation rotation, scaleOrientation;
    matrix.getTransform(translation, rotation, scale, scaleOrientation);
    if (translation != SbVec3f(0, 0, 0))
        node.translation = translation;
    if (rotation != SbRotation())
        node.rotation = rotation;
    if (scale == SbVec3f(1, 1, 1))
        return;
    scaleField = scale;
    if (scaleOrientation != SbRotation())
        node.scaleOrientation = scaleOrientation;
}

} // namespace kalmyr::detail
