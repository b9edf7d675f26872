#include "mirabo/viewer/SceneManagerLook.h"

#include "mirabo/extender/private/Frame.h"
#include "mirabo/extension/MrbServicesImpl.h"

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/gui/SoSceneManager.h>

#include <algorithm>

namespace mirabo {

namespace {

constexpr float kFullComponent = 255;

SoSceneManager* manager()
{
    return MrbServicesImpl::getInstance()->getSceneManager();
}

int component(float value)
{
    return static_cast<int>(std::clamp(value, 0.f, 1.f) * kFullComponent);
}

} // namespace

int SceneManagerLook::getTransparencyType() const
{
    const SoSceneManager* scene = manager();
    return scene ? scene->getGLRenderAction()->getTransparencyType() : kNoType;
}

void SceneManagerLook::setTransparencyType(int type)
{
    const Frame frame;
    SoSceneManager* scene = manager();
    if (!scene)
        return;
    scene->getGLRenderAction()->setTransparencyType(type);
    scene->scheduleRedraw();
}

QColor SceneManagerLook::getBackground() const
{
    const SoSceneManager* scene = manager();
    if (!scene)
        return Qt::black;
    const SbColor& color = scene->getBackgroundColor();
    return {component(color[0]), component(color[1]), component(color[2])};
}

void SceneManagerLook::setBackground(const QColor& color)
{
    const Frame frame;
    SoSceneManager* scene = manager();
    if (!scene)
        return;
    const auto share = [](int value) { return static_cast<float>(value / 255.0); };
    scene->setBackgroundColor(
        SbColor(share(color.red()), share(color.green()), share(color.blue())));
}

} // namespace mirabo
