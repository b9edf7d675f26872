#pragma once

#include <kalmyr/base/SbName.h>
#include <kalmyr/base/SbRotation.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/cameras/SoCamera.h>

class SoPath;

/// The camera or viewpoint through which a scene is shown: the one rule that viewers, pictures,
/// drawings and conversions share.
///
/// It is the first camera of the scene or the bound viewpoint, at first the first one, whichever
/// comes first; those of inlined files come after others, those that a switch or a level of detail
/// does not show last. All of the scene is seen through it, wherever it stands. Only in scenes that
/// are not of VRML 1.0 nodes throughout do other cameras keep what stands behind them: when there
/// is no shape without a camera, and some behind the first one.
class KALMYR_API SoSceneCamera {
public:
    /// Nothing is found in a null scene. Binds the first nodes of a VRML97 scene.
    static SoSceneCamera find(SoNode* scene);
    /// The first camera or viewpoint of that name.
    static SoSceneCamera find(SoNode* scene, const SbName& name);
    /// The first place of a camera or viewpoint.
    static SoSceneCamera find(SoNode* scene, const SoNode* camera);

    SoSceneCamera();
    ~SoSceneCamera();
    SoSceneCamera(const SoSceneCamera&);
    SoSceneCamera& operator=(const SoSceneCamera&);

    bool isFound() const { return m_path.get() != nullptr; }
    /// From the scene down to the camera or viewpoint; null when nothing was found.
    SoPath* getPath() const { return m_path.get(); }
    /// The node when it is a camera that shows what it should from where it stands; null when the
    /// scene needs another one in front of it, with its override flag set.
    SoCamera* getCameraInForce() const { return m_inForce; }
    bool isViewpoint() const;

    /// Makes the camera for the front of the scene, in the space of the scene. Its near and far
    /// planes are not fitted. `aspect`: of the picture, width by height. Null when nothing was
    /// found or its place cannot be read.
    SoRef<SoCamera> makeCamera(float aspect) const;

    /// Whether a node is a camera or a viewpoint.
    static bool isCamera(const SoNode* node);
    /// Place and direction, in the space of the path's head, of the camera or viewpoint at its end.
    /// False for other nodes, and for places that cannot be read.
    static bool getPose(SoPath* path, SbVec3f& position, SbRotation& orientation);

private:
    SoRef<SoPath> m_path;
    SoCamera* m_inForce = nullptr; // Of the path.
};
