#include "View.h"

#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/io/SoSceneCamera.h>
#include <kalmyr/lights/SoLight.h>
#include <kalmyr/rendering/SoSceneView.h>

namespace {

bool hasLight(SoNode* root)
{
    SoSearchAction search;
    search.setType(SoLight::getClassTypeId());
    search.setInterest(SoSearchAction::FIRST);
    search.apply(root);
    return search.isFound();
}

} // namespace

SoRef<SoNode> seenByCamera(const Scene& scene, const std::string& cameraName, bool showsAll,
                           const SbViewportRegion& region)
{
    SoNode* root = scene.root.get();
    const SoSceneCamera camera = cameraName.empty()
                                     ? SoSceneCamera::find(root)
                                     : SoSceneCamera::find(root, SbName(cameraName.c_str()));
    if (!camera.isFound() && !cameraName.empty())
        return nullptr;
    if (!camera.isFound() && !showsAll)
        return scene.root; // who draws it knows the proportions for showing it whole
    // VRML files are lit from the eye, others where they have no light of their own.
    const bool isLit = scene.format == SoInput::VRML1 || !camera.isFound() || camera.isViewpoint()
                       || !hasLight(root);
    return kalmyr::throughCamera(root, camera, region, isLit, showsAll);
}
