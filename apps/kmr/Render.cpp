#include "Commands.h"
#include "GraphCounter.h"
#include "Scene.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetMatrixAction.h>
#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/base/SbNumber.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/rendering/SoRenderingInit.h>
#include <kalmyr/vrml/SoVRMLBindable.h>
#include <kalmyr/vrml/SoVRMLNavigationInfo.h>
#include <kalmyr/vrml/SoVRMLViewpoint.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <optional>

namespace {

struct PictureOptions {
    int width = 800;
    int height = 600;
    SbColor background{0, 0, 0};
    std::optional<int> transparency;
};

struct PictureFormat {
    const char* extension;
    bool (*write)(const SoOffscreenRenderer& renderer, std::FILE* file);
};
constexpr PictureFormat kFormats[] = {
    {"png", [](const SoOffscreenRenderer& r, std::FILE* f) { return r.writeToPNG(f); }},
    {"jpg", [](const SoOffscreenRenderer& r, std::FILE* f) { return r.writeToJPEG(f, 0.9f); }},
    {"jpeg", [](const SoOffscreenRenderer& r, std::FILE* f) { return r.writeToJPEG(f, 0.9f); }},
    {"bmp", [](const SoOffscreenRenderer& r, std::FILE* f) { return r.writeToBMP(f); }},
    {"tif", [](const SoOffscreenRenderer& r, std::FILE* f) { return r.writeToTIFF(f); }},
    {"tiff", [](const SoOffscreenRenderer& r, std::FILE* f) { return r.writeToTIFF(f); }},
    {"rgb", [](const SoOffscreenRenderer& r, std::FILE* f) { return r.writeToRGB(f); }},
    {"ps", [](const SoOffscreenRenderer& r, std::FILE* f) { return r.writeToPostScript(f); }},
};

const PictureFormat* formatOf(const std::string& name)
{
    const std::size_t dot = name.rfind('.');
    std::string extension = dot == std::string::npos ? std::string() : name.substr(dot + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const PictureFormat& format : kFormats)
        if (extension == format.extension)
            return &format;
    return nullptr;
}

bool parseSize(const std::string& text, PictureOptions& options)
{
    constexpr int kMaxSide = 16384;
    const std::size_t x = text.find('x');
    return x != std::string::npos && SbNumber::toInt(text.substr(0, x), options.width)
           && SbNumber::toInt(text.substr(x + 1), options.height) && options.width > 0
           && options.height > 0 && options.width <= kMaxSide && options.height <= kMaxSide;
}

/// Three numbers from 0 to 1.
bool parseColor(const std::string& text, SbColor& color)
{
    std::size_t at = 0;
    for (int i = 0; i < 3; ++i) {
        const std::size_t comma = text.find(',', at);
        if ((comma == std::string::npos) != (i == 2))
            return false;
        if (!SbNumber::toFloat(text.substr(at, comma - at), color[i]) || color[i] < 0
            || color[i] > 1)
            return false;
        at = comma + 1;
    }
    return true;
}

/// The first viewpoint of a VRML97 scene as a camera with a light; null when there is none.
SoRef<SoNode> throughViewpoint(const Scene& scene, float aspect)
{
    SoVRMLBindable::bindFirst(scene.root.get());
    SoSearchAction search;
    if (SoNode* bound =
            SoVRMLBindable::getBound(scene.root.get(), SoVRMLViewpoint::getClassTypeId()))
        search.setNode(bound);
    else
        search.setType(SoVRMLViewpoint::getClassTypeId());
    search.setSearchingAll(true);
    search.apply(scene.root.get());
    if (!search.isFound())
        return nullptr;
    const auto* viewpoint = static_cast<SoVRMLViewpoint*>(search.getPath()->getTail());
    SoGetMatrixAction matrix{SbViewportRegion()};
    matrix.apply(search.getPath());
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* camera = new SoPerspectiveCamera;
    camera->position = viewpoint->getPosition(matrix.getMatrix());
    camera->orientation = viewpoint->getOrientation(matrix.getMatrix());
    camera->heightAngle = viewpoint->getHeightAngle(aspect);
    camera->nearDistance = 0.1f;
    camera->farDistance = 10000.0f;
    auto* light = new SoDirectionalLight;
    const auto* info = static_cast<const SoVRMLNavigationInfo*>(
        SoVRMLBindable::getBound(scene.root.get(), SoVRMLNavigationInfo::getClassTypeId()));
    light->on = !info || info->headlight.getValue();
    SbVec3f direction;
    camera->orientation.getValue().multVec(SbVec3f(0, 0, -1), direction);
    light->direction = direction;
    root->addChild(camera);
    root->addChild(light);
    root->addChild(scene.root.get());
    return root;
}

template <class Node>
SoRef<SoPath> pathToFirst(SoNode* root)
{
    SoSearchAction search;
    search.setType(Node::getClassTypeId());
    search.setInterest(SoSearchAction::FIRST);
    search.apply(root);
    return SoRef<SoPath>(search.getPath());
}

/// The distances in front of the camera between which there is something to see.
void setPlanes(SoCamera& camera, const SbMatrix& toWorld, const SbBox3f& box)
{
    SbMatrix toCamera, turn;
    toCamera.setTranslate(-camera.position.getValue());
    turn.setRotate(camera.orientation.getValue().inverse());
    SbBox3f seen = box;
    seen.transform(toWorld.inverse());
    seen.transform(toCamera);
    seen.transform(turn);
    const float slack = 0.01f * (seen.getMax()[2] - seen.getMin()[2]) + 1e-6f;
    const float farthest = slack - seen.getMin()[2], nearest = -seen.getMax()[2] - slack;
    if (seen.isEmpty() || !(farthest > 0) || !std::isfinite(farthest))
        return;
    constexpr float kNearestShare = 0.001f; // of the farthest: depth buffers have no more to give
    const bool isPerspective = camera.isOfType(SoPerspectiveCamera::getClassTypeId());
    camera.farDistance = farthest;
    camera.nearDistance = isPerspective ? std::max(nearest, farthest * kNearestShare) : nearest;
}

/// VRML 1.0 has no clipping planes, and its viewers light what they see. Null without a camera.
SoRef<SoNode> throughOwnCamera(const Scene& scene, const SbViewportRegion& region)
{
    const SoRef<SoPath> path = pathToFirst<SoCamera>(scene.root.get());
    if (!path)
        return nullptr;
    auto& camera = *static_cast<SoCamera*>(path->getTail());
    SoGetMatrixAction matrix(region);
    matrix.apply(path.get());
    if (camera.nearDistance.isDefault() && camera.farDistance.isDefault()) {
        SoGetBoundingBoxAction bounds(region);
        bounds.apply(scene.root.get());
        setPlanes(camera, matrix.getMatrix(), bounds.getBoundingBox());
    }
    const SoRef<SoSeparator> root(new SoSeparator);
    if (scene.format == SoInput::VRML1 || !pathToFirst<SoLight>(scene.root.get())) {
        auto* light = new SoDirectionalLight;
        const SbVec3f ahead = camera.orientation.getValue().rotated(SbVec3f(0, 0, -1));
        SbVec3f direction;
        matrix.getMatrix().multDirMatrix(ahead, direction);
        light->direction = direction;
        root->addChild(light);
    }
    root->addChild(scene.root.get());
    return root;
}

int draw(const Scene& scene, const PictureOptions& options, const PictureFormat& format,
         const std::string& name)
{
    const ErrorPrinter errors(name);
    const SbViewportRegion region(static_cast<short>(options.width),
                                  static_cast<short>(options.height));
    SoOffscreenRenderer renderer(region);
    renderer.setBackgroundColor(options.background);
    renderer.setDefaultCamera(true);
    renderer.setNumSamples(4);
    if (options.transparency)
        renderer.getGLRenderAction()->setTransparencyType(
            static_cast<SoGLRenderAction::TransparencyType>(*options.transparency));
    const float aspect = static_cast<float>(options.width) / static_cast<float>(options.height);
    SoRef<SoNode> seen = throughViewpoint(scene, aspect);
    if (!seen)
        seen = throughOwnCamera(scene, region);
    if (!renderer.render(seen ? seen.get() : scene.root.get()))
        return 1;
    SbString error;
    std::FILE* file = SbFileHelper::open(SbString(name), "wb", &error);
    if (!file) {
        std::fprintf(stderr, "%s: error: it cannot be created: %s\n", name.c_str(),
                     error.getString());
        return 1;
    }
    const bool written = format.write(renderer, file);
    return std::fclose(file) == 0 && written ? 0 : 1;
}

} // namespace

int runRender(const Arguments& given)
{
    Arguments arguments = given;
    PictureOptions options;
    std::string size, background, transparency, option;
    if (!takeOption(arguments, "--size", size) || !takeOption(arguments, "--background", background)
        || !takeOption(arguments, "--transparency", transparency))
        return wrongUsage("an option needs a value");
    if (hasUnknownOption(arguments, option))
        return wrongUsage("unknown option " + option);
    if (arguments.size() != 2)
        return wrongUsage("render needs the scene and the picture");
    if (!size.empty() && !parseSize(size, options))
        return wrongUsage("--size is WIDTHxHEIGHT in pixels, not " + size);
    if (!background.empty() && !parseColor(background, options.background))
        return wrongUsage("--background is R,G,B from 0 to 1, not " + background);
    int number = 0;
    constexpr int kNumTransparencyTypes = 11;
    if (!transparency.empty()) {
        if (!SbNumber::toInt(transparency, number) || number < 0 || number >= kNumTransparencyTypes)
            return wrongUsage("--transparency is a number from 0 to 10, not " + transparency);
        options.transparency = number;
    }
    const PictureFormat* format = formatOf(arguments[1]);
    if (!format)
        return wrongUsage("the picture's name must end in png, jpg, bmp, tif, rgb or ps");
    kalmyr::initRendering();
    const Scene scene = readScene(arguments[0], false);
    if (const int status = printErrors(scene); status != 0)
        return status;
    GraphCounter counter;
    counter.add(scene.root.get());
    if (counter.occurrences() > kMaxOccurrences) {
        std::fprintf(
            stderr,
            "%s: error: it has %llu occurrences of nodes, of which at most %llu can be drawn\n",
            scene.file.c_str(), static_cast<unsigned long long>(counter.occurrences()),
            static_cast<unsigned long long>(kMaxOccurrences));
        return 1;
    }
    return draw(scene, options, *format, arguments[1]);
}
