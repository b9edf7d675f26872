#pragma once

#include <kalmyr/base/SbColor.h>
#include <kalmyr/elements/SoState.h>

#include <algorithm>

/// Surface properties. The arrays belong to the nodes that set them, which live while traversed;
/// shapes with per-part bindings pick from them by material index.
struct SoMaterialValues {
    SbColor ambient{0.2f, 0.2f, 0.2f};
    SbColor specular{0, 0, 0};
    SbColor emissive{0, 0, 0};
    float shininess = 0.2f;           ///< 0 to 1
    bool takesEnvironment = true;     ///< false: ambient light comes from light sources alone
    const SbColor* diffuse = nullptr; ///< null: the default (0.8, 0.8, 0.8)
    int numDiffuse = 0;
    const float* transparency = nullptr; ///< 0 opaque to 1; null: opaque
    int numTransparency = 0;

    /// Beyond either end the value there, as the indices of files are taken.
    SbColor getDiffuse(int i = 0) const
    {
        return numDiffuse > 0 ? diffuse[std::clamp(i, 0, numDiffuse - 1)]
                              : SbColor(0.8f, 0.8f, 0.8f);
    }
    float getTransparency(int i = 0) const
    {
        return numTransparency > 0 ? transparency[std::clamp(i, 0, numTransparency - 1)] : 0.0f;
    }
};

class KALMYR_API SoMaterialElement final
    : public SoValueElement<SoMaterialElement, SoMaterialValues> {
public:
    static int getStackIndex();
    static const SoMaterialValues& get(SoState* state)
    {
        return state->get<SoMaterialElement>().value();
    }
};

/// How material (or colour) indices go to parts of a shape; numbers as in scene files.
struct SoBinding {
    enum Value {
        OVERALL = 2,
        PER_PART = 3,
        PER_PART_INDEXED = 4,
        PER_FACE = 5,
        PER_FACE_INDEXED = 6,
        PER_VERTEX = 7,
        PER_VERTEX_INDEXED = 8
    };
};
class KALMYR_API SoMaterialBindingElement final
    : public SoValueElement<SoMaterialBindingElement, int> {
public:
    static int getStackIndex();
    /// OVERALL until a node sets another.
    static int get(SoState* state)
    {
        const int v = state->get<SoMaterialBindingElement>().value();
        return v ? v : SoBinding::OVERALL;
    }
};
