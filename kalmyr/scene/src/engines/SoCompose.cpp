#include <kalmyr/engines/SoCompose.h>

#include "EngineTools.h"

using kalmyr::detail::fill;
using kalmyr::detail::longest;
using kalmyr::detail::valueAt;

SO_ENGINE_SOURCE(SoComposeVec2f)
SO_ENGINE_SOURCE(SoComposeVec3f)
SO_ENGINE_SOURCE(SoComposeVec4f)
SO_ENGINE_SOURCE(SoComposeRotation)
SO_ENGINE_SOURCE(SoComposeRotationFromTo)
SO_ENGINE_SOURCE(SoComposeMatrix)

SoComposeVec2f::SoComposeVec2f()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(x, (0.0f));
    SO_ADD_FIELD(y, (0.0f));
    SO_ADD_OUTPUT(vector);
}

SoComposeVec2f::~SoComposeVec2f() = default;

void SoComposeVec2f::initClass()
{
    SO_ENGINE_INIT_CLASS(SoComposeVec2f, SoEngine, "ComposeVec2f");
}

void SoComposeVec2f::evaluate()
{
    fill(vector, longest(x, y), [this](int i) { return SbVec2f(valueAt(x, i), valueAt(y, i)); });
}

SoComposeVec3f::SoComposeVec3f()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(x, (0.0f));
    SO_ADD_FIELD(y, (0.0f));
    SO_ADD_FIELD(z, (0.0f));
    SO_ADD_OUTPUT(vector);
}

SoComposeVec3f::~SoComposeVec3f() = default;

void SoComposeVec3f::initClass()
{
    SO_ENGINE_INIT_CLASS(SoComposeVec3f, SoEngine, "ComposeVec3f");
}

void SoComposeVec3f::evaluate()
{
    fill(vector, longest(x, y, z),
         [this](int i) { return SbVec3f(valueAt(x, i), valueAt(y, i), valueAt(z, i)); });
}

SoComposeVec4f::SoComposeVec4f()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(x, (0.0f));
    SO_ADD_FIELD(y, (0.0f));
    SO_ADD_FIELD(z, (0.0f));
    SO_ADD_FIELD(w, (0.0f));
    SO_ADD_OUTPUT(vector);
}

SoComposeVec4f::~SoComposeVec4f() = default;

void SoComposeVec4f::initClass()
{
    SO_ENGINE_INIT_CLASS(SoComposeVec4f, SoEngine, "ComposeVec4f");
}

void SoComposeVec4f::evaluate()
{
    fill(vector, longest(x, y, z, w), [this](int i) {
        return SbVec4f(valueAt(x, i), valueAt(y, i), valueAt(z, i), valueAt(w, i));
    });
}

SoComposeRotation::SoComposeRotation()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(axis, (0.0f, 0.0f, 1.0f));
    SO_ADD_FIELD(angle, (0.0f));
    SO_ADD_OUTPUT(rotation);
}

SoComposeRotation::~SoComposeRotation() = default;

void SoComposeRotation::initClass()
{
    SO_ENGINE_INIT_CLASS(SoComposeRotation, SoEngine, "ComposeRotation");
}

void SoComposeRotation::evaluate()
{
    fill(rotation, longest(axis, angle),
         [this](int i) { return SbRotation(valueAt(axis, i), valueAt(angle, i)); });
}

SoComposeRotationFromTo::SoComposeRotationFromTo()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(from, (0.0f, 0.0f, 1.0f));
    SO_ADD_FIELD(to, (0.0f, 0.0f, 1.0f));
    SO_ADD_OUTPUT(rotation);
}

SoComposeRotationFromTo::~SoComposeRotationFromTo() = default;

void SoComposeRotationFromTo::initClass()
{
    SO_ENGINE_INIT_CLASS(SoComposeRotationFromTo, SoEngine, "ComposeRotationFromTo");
}

void SoComposeRotationFromTo::evaluate()
{
    fill(rotation, longest(from, to),
         [this](int i) { return SbRotation(valueAt(from, i), valueAt(to, i)); });
}

SoComposeMatrix::SoComposeMatrix()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(translation, (0.0f, 0.0f, 0.0f));
    SO_ADD_FIELD(rotation, ());
    SO_ADD_FIELD(scaleFactor, (1.0f, 1.0f, 1.0f));
    SO_ADD_FIELD(scaleOrientation, ());
    SO_ADD_FIELD(center, (0.0f, 0.0f, 0.0f));
    SO_ADD_OUTPUT(matrix);
}

SoComposeMatrix::~SoComposeMatrix() = default;

void SoComposeMatrix::initClass()
{
    SO_ENGINE_INIT_CLASS(SoComposeMatrix, SoEngine, "ComposeMatrix");
}

void SoComposeMatrix::evaluate()
{
    fill(matrix, longest(translation, rotation, scaleFactor, scaleOrientation, center),
         [this](int i) {
             SbMatrix m;
             m.setTransform(valueAt(translation, i), valueAt(rotation, i), valueAt(scaleFactor, i),
                            valueAt(scaleOrientation, i), valueAt(center, i));
             return m;
         });
}
