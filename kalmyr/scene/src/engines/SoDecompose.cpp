#include <kalmyr/engines/SoDecompose.h>

#include "EngineTools.h"

using kalmyr::detail::fill;
using kalmyr::detail::longest;
using kalmyr::detail::valueAt;

SO_ENGINE_SOURCE(SoDecomposeVec2f)
SO_ENGINE_SOURCE(SoDecomposeVec3f)
SO_ENGINE_SOURCE(SoDecomposeVec4f)
SO_ENGINE_SOURCE(SoDecomposeRotation)
SO_ENGINE_SOURCE(SoDecomposeMatrix)

namespace {

template <class Vectors>
void takeComponent(const Vectors& vectors, int component, SoMFFloat& to)
{
    fill(to, vectors.getNum(), [&](int i) { return vectors[i][component]; });
}

} // namespace

SoDecomposeVec2f::SoDecomposeVec2f()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(vector, ());
    SO_ADD_OUTPUT(x);
    SO_ADD_OUTPUT(y);
}

SoDecomposeVec2f::~SoDecomposeVec2f() = default;

void SoDecomposeVec2f::initClass()
{
    SO_ENGINE_INIT_CLASS(SoDecomposeVec2f, SoEngine, "DecomposeVec2f");
}

void SoDecomposeVec2f::evaluate()
{
    takeComponent(vector, 0, x);
    takeComponent(vector, 1, y);
}

SoDecomposeVec3f::SoDecomposeVec3f()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(vector, ());
    SO_ADD_OUTPUT(x);
    SO_ADD_OUTPUT(y);
    SO_ADD_OUTPUT(z);
}

SoDecomposeVec3f::~SoDecomposeVec3f() = default;

void SoDecomposeVec3f::initClass()
{
    SO_ENGINE_INIT_CLASS(SoDecomposeVec3f, SoEngine, "DecomposeVec3f");
}

void SoDecomposeVec3f::evaluate()
{
    takeComponent(vector, 0, x);
    takeComponent(vector, 1, y);
    takeComponent(vector, 2, z);
}

SoDecomposeVec4f::SoDecomposeVec4f()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(vector, ());
    SO_ADD_OUTPUT(x);
    SO_ADD_OUTPUT(y);
    SO_ADD_OUTPUT(z);
    SO_ADD_OUTPUT(w);
}

SoDecomposeVec4f::~SoDecomposeVec4f() = default;

void SoDecomposeVec4f::initClass()
{
    SO_ENGINE_INIT_CLASS(SoDecomposeVec4f, SoEngine, "DecomposeVec4f");
}

void SoDecomposeVec4f::evaluate()
{
    takeComponent(vector, 0, x);
    takeComponent(vector, 1, y);
    takeComponent(vector, 2, z);
    takeComponent(vector, 3, w);
}

SoDecomposeRotation::SoDecomposeRotation()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(rotation, ());
    SO_ADD_OUTPUT(axis);
    SO_ADD_OUTPUT(angle);
}

SoDecomposeRotation::~SoDecomposeRotation() = default;

void SoDecomposeRotation::initClass()
{
    SO_ENGINE_INIT_CLASS(SoDecomposeRotation, SoEngine, "DecomposeRotation");
}

void SoDecomposeRotation::evaluate()
{
    const int num = rotation.getNum();
    SbVec3f* axes = axis.setNumRaw(num);
    float* angles = angle.setNumRaw(num);
    for (int i = 0; i < num; ++i)
        rotation[i].getValue(axes[i], angles[i]);
    axis.finishEditing();
    angle.finishEditing();
}

SoDecomposeMatrix::SoDecomposeMatrix()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(matrix, ());
    SO_ADD_FIELD(center, (0.0f, 0.0f, 0.0f));
    SO_ADD_OUTPUT(translation);
    SO_ADD_OUTPUT(rotation);
    SO_ADD_OUTPUT(scaleFactor);
    SO_ADD_OUTPUT(scaleOrientation);
}

SoDecomposeMatrix::~SoDecomposeMatrix() = default;

void SoDecomposeMatrix::initClass()
{
    SO_ENGINE_INIT_CLASS(SoDecomposeMatrix, SoEngine, "DecomposeMatrix");
}

void SoDecomposeMatrix::evaluate()
{
    const int num = longest(matrix, center);
    SbVec3f* translations = translation.setNumRaw(num);
    SbRotation* rotations = rotation.setNumRaw(num);
    SbVec3f* scales = scaleFactor.setNumRaw(num);
    SbRotation* orientations = scaleOrientation.setNumRaw(num);
    for (int i = 0; i < num; ++i)
        valueAt(matrix, i).getTransform(translations[i], rotations[i], scales[i], orientations[i],
                                        valueAt(center, i));
    for (SoMField* field :
         {static_cast<SoMField*>(&translation), static_cast<SoMField*>(&rotation),
          static_cast<SoMField*>(&scaleFactor), static_cast<SoMField*>(&scaleOrientation)})
        field->touch();
}
