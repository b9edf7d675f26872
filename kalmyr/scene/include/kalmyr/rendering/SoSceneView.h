#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/base/SbViewportRegion.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/rendering/SoRenderAppearance.h>

#include <cstdint>
#include <vector>

class SoGLRenderAction;
class SoPath;

/// A light in the space of the eye.
struct SoEyeLight {
    SoLightRecord::Kind kind = SoLightRecord::DIRECTIONAL;
    SbVec3f position;  ///< of a directional light: the direction to it, of length 1
    SbVec3f direction; ///< in which a spot shines, of length 1
    SbColor color;     ///< times the intensity
    float ambient = 0; ///< share that falls on everything
    SbVec3f falloff;   ///< constant, linear, quadratic
    float reach = 0;   ///< nothing farther away is lit
    float cosCutOff = 0;
    float spotExponent = 0;
    float beamWidth = -1; ///< radians; not negative: falls off evenly from there to the cut-off
};

/// The contents of a frame of a render action, for drawing without OpenGL: cameras, lights, visible
/// shapes and background. Holds references on its geometries and appearances, not on nodes.
struct SoSceneView {
    /// A camera and its part of the target.
    struct Camera {
        SoView view;
        SbViewportRegion region;
    };
    /// The lights and clipping planes of some items, in the space of the eye.
    struct Surroundings {
        std::vector<SoEyeLight> lights;
        std::vector<SbVec4f> clipPlanes; ///< a, b, c, d: kept is a x + b y + c z + d >= 0
    };
    struct Item {
        SoRef<SoGeometry> geometry;
        SoRef<const SoRenderAppearance> appearance;
        SbMatrix toEye;
        std::uint32_t surroundings = 0; ///< index
        std::uint32_t camera = 0;       ///< index
        int layer = 0;                  ///< above 0: drawn on top of what is below
        bool transparent = false;       ///< some part of it lets light through
        bool mirrored = false;          ///< the matrix turns the orientation of faces
        const SoNode* node = nullptr;   ///< the shape; not owned
    };
    struct BackgroundStop {
        SbColor color;
        float angle = 0; ///< from the zenith in radians, or a share of the picture from its top
    };

    std::vector<Camera> cameras; ///< at least one
    std::vector<Surroundings> surroundings;
    SoFogValues fog;                        ///< in front of that of the items' own environment
    std::vector<Item> items;                ///< in order of traversal, without those out of view
    std::vector<BackgroundStop> background; ///< rising; empty: the scene has none
    SbVec3f zenith; ///< in the world; zero: the background's stops are shares of the picture
};

class SoSceneCamera;

namespace kalmyr {

/// Traverses like a frame of `action`, using and filling its caches, but draws nothing. Needs no
/// context. Empty for a null scene.
KALMYR_API SoSceneView viewScene(SoGLRenderAction& action, SoNode* root);
KALMYR_API SoSceneView viewScene(SoGLRenderAction& action, SoPath* path);

/// The scene as a camera that SoSceneCamera found in it shows it, with planes that fit what is
/// seen: the scene itself when that camera is in force, else a group of a camera in front of it and
/// the scene. Where nothing was found the camera shows the whole scene. `hasLight`: a light shines
/// from the eye, unless a navigation info of the scene forbids it. `showsAll`: the camera looks the
/// same way at the whole scene.
KALMYR_API SoRef<SoNode> throughCamera(SoNode* scene, const SoSceneCamera& camera,
                                       const SbViewportRegion& region, bool hasLight,
                                       bool showsAll = false);

/// The scene itself when it has a camera; else as its bound or first viewpoint shows it, or whole,
/// with a light from the eye.
KALMYR_API SoRef<SoNode> withDefaultCamera(SoNode* scene, const SbViewportRegion& region);

/// Index pairs of the edges between the faces of a geometry, or at its border: what is drawn of it
/// in the style of lines. `asPolylines`: each edge once, those that go on in each other one after
/// the other, as lines with a pattern are drawn.
KALMYR_API std::vector<std::uint32_t> getFaceEdges(const SoGeometry& geometry,
                                                   bool asPolylines = false);

/// The edges that a line drawing of a geometry consists of, as indices of its vertices.
struct SceneOutline {
    /// Pairs: edges at the border, between more than two triangles, or with a sharp bend.
    std::vector<std::uint32_t> sharp;
    /// Fours: corner of one triangle, the edge, corner of the other triangle. To be drawn only
    /// where one of the two faces the eye and the other does not.
    std::vector<std::uint32_t> smooth;
};
KALMYR_API SceneOutline getOutline(const SoGeometry& geometry);

} // namespace kalmyr
