#include "mirabo/viewer/ShownScene.h"

#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/extension/MrbServicesImpl.h"

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/gui/SoSceneManager.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/rendering/SoSceneView.h>

#include <QCoreApplication>

#include <memory>

namespace mirabo {

namespace {

constexpr int kSamples = 4; // a pixel

SoNode* shownRoot()
{
    const MrbServicesImpl* services = MrbServicesImpl::getInstance();
    const SoSceneManager* manager = services->getSceneManager();
    return manager ? manager->getSceneGraph() : services->getSceneGraph();
}

} // namespace

ShownScene::ShownScene() : m_root(shownRoot())
{
    if (const SoSceneManager* manager = MrbServicesImpl::getInstance()->getSceneManager()) {
        m_region = manager->getViewportRegion();
        m_background = manager->getBackgroundColor();
        m_transparencyType = manager->getGLRenderAction()->getTransparencyType();
        m_drawStyle = manager->getDrawStyle();
        m_stereo = manager->getStereo();
    }
    if (m_root)
        m_root = kalmyr::withDefaultCamera(m_root.get(), m_region);
}

ShownScene::~ShownScene()
{
    // The host may have let go of it meanwhile.
    const auto last = std::make_shared<SoRef<SoNode>>(std::move(m_root));
    whenReadable(QCoreApplication::instance(), [last] { last->reset(); });
}

bool ShownScene::render(SoOffscreenRenderer& renderer) const
{
    renderer.setViewportRegion(m_region);
    renderer.setNumSamples(kSamples);
    if (m_background)
        renderer.setBackgroundColor(*m_background);
    if (m_transparencyType)
        renderer.getGLRenderAction()->setTransparencyType(*m_transparencyType);
    renderer.getGLRenderAction()->setDrawStyle(m_drawStyle);
    renderer.getGLRenderAction()->setStereo(m_stereo);
    return renderer.render(m_root.get());
}

} // namespace mirabo
