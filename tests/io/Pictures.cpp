#include "Pictures.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/io/SoSceneCamera.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/rendering/SoSceneView.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace io {

namespace {

constexpr unsigned char kBackground[] = {51, 77, 102};

const SbViewportRegion& region()
{
    static const SbViewportRegion one(Picture::kSize, Picture::kSize);
    return one;
}

Picture drawn(SoNode* root)
{
    SoOffscreenRenderer renderer(region());
    renderer.setBackgroundColor(
        SbColor(kBackground[0] / 255.0f, kBackground[1] / 255.0f, kBackground[2] / 255.0f));
    Picture picture;
    if (renderer.render(root))
        picture.bytes.assign(renderer.getBuffer(),
                             renderer.getBuffer() + 3 * Picture::kSize * Picture::kSize);
    return picture;
}

void removeCameras(SoNode* scene)
{
    SoSearchAction search;
    search.setType(SoCamera::getClassTypeId());
    search.setSearchingAll(true);
    for (search.apply(scene); search.isFound(); search.apply(scene)) {
        const SoPath* path = search.getPath();
        if (path->getLength() < 2)
            return;
        SoChildList* children = path->getNode(path->getLength() - 2)->getChildren();
        if (!children)
            return;
        children->remove(path->getIndex(path->getLength() - 1));
    }
}

int distance(const unsigned char* a, const unsigned char* b)
{
    int most = 0;
    for (int c = 0; c < 3; ++c)
        most = std::max(most, std::abs(a[c] - b[c]));
    return most;
}

} // namespace

double Picture::coverage() const
{
    std::size_t covered = 0;
    for (std::size_t i = 0; i < bytes.size(); i += 3)
        covered += distance(&bytes[i], kBackground) > 8;
    return 3.0 * static_cast<double>(covered) / (bytes.empty() ? 1.0 : double(bytes.size()));
}

double Picture::differenceTo(const Picture& other) const
{
    constexpr int kSeen = 30; // of 255: meshes of different fineness shade a little differently
    if (bytes.size() != other.bytes.size() || bytes.empty())
        return 1;
    std::size_t different = 0;
    for (std::size_t i = 0; i < bytes.size(); i += 3)
        different += distance(&bytes[i], &other.bytes[i]) > kSeen;
    return 3.0 * static_cast<double>(different) / static_cast<double>(bytes.size());
}

bool canDraw()
{
    return SoOffscreenContext::shared().isValid();
}

SbBox3f boundsOf(SoNode* scene)
{
    SoGetBoundingBoxAction bounds{region()};
    bounds.apply(scene);
    const SbBox3f box = bounds.getBoundingBox();
    for (int i = 0; i < 3; ++i)
        if (!std::isfinite(box.getMin()[i]) || !std::isfinite(box.getMax()[i]))
            return SbBox3f();
    return box;
}

Picture draw(SoNode* scene, const SbBox3f& box)
{
    removeCameras(scene);
    const float size = std::max((box.getMax() - box.getMin()).length(), 1e-3f);
    const SbVec3f center = (box.getMin() + box.getMax()) * 0.5f;
    SbVec3f towards(0.45f, 0.6f, 1);
    towards.normalize();
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* camera = new SoOrthographicCamera;
    camera->position = center + towards * (2 * size);
    camera->pointAt(center);
    camera->nearDistance = size * 0.5f;
    camera->farDistance = size * 4;
    camera->height = size * 1.05f;
    auto* light = new SoDirectionalLight;
    light->direction = SbVec3f(-0.3f, -0.5f, -1);
    root->addChild(camera);
    root->addChild(light);
    root->addChild(scene);
    return drawn(root.get());
}

Picture drawAsSeen(SoNode* scene)
{
    return drawn(scene);
}

Picture drawAsShown(SoNode* scene)
{
    const SoRef<SoNode> shown =
        kalmyr::throughCamera(scene, SoSceneCamera::find(scene), region(), true);
    return drawn(shown.get());
}

} // namespace io
