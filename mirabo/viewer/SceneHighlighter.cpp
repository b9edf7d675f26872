#include "mirabo/viewer/SceneHighlighter.h"

#include "mirabo/extender/private/Frame.h"
#include "mirabo/extender/private/GraphReading.h"

#include <kalmyr/core/SoPath.h>
#include <kalmyr/gui/SoInspectorViews.h>
#include <kalmyr/gui/SoSceneManager.h>
#include <kalmyr/rendering/SoLineHighlightRenderAction.h>

#include <QScopedValueRollback>

#include <utility>

namespace mirabo {

SceneHighlighter::SceneHighlighter(std::function<void(const SoPath*)> picked)
    : m_picked(std::move(picked)), m_selection(new SoSelection)
{
    m_selection->policy = SoSelection::SINGLE;
    m_selection->addSelectionCallback(&SceneHighlighter::pathSelected, this);
}

SceneHighlighter::~SceneHighlighter()
{
    // Others may hold the scene manager, and go on drawing.
    if (m_manager)
        m_manager->setGLRenderAction(nullptr);
    const GraphReading graph;
    m_selection->removeSelectionCallback(&SceneHighlighter::pathSelected, this);
    m_selection->deselectAll();
    m_selection->removeAllChildren();
}

void SceneHighlighter::pathSelected(void* data, SoPath* path)
{
    auto* self = static_cast<SceneHighlighter*>(data);
    if (self->m_selecting || std::this_thread::get_id() != self->m_thread)
        return; // nobody picked
    const Frame frame;
    self->m_picked(path);
}

void SceneHighlighter::install(SoSceneManager* manager)
{
    m_action = std::make_unique<SoLineHighlightRenderAction>();
    m_action->setVisible(m_on);
    applyStyle();
    m_manager = SoRef<SoSceneManager>(manager);
    if (m_manager)
        m_manager->setGLRenderAction(m_action.get());
}

SoNode* SceneHighlighter::getScene() const
{
    if (m_scene || m_selection->getNumChildren() == 0)
        return m_scene.get();
    return m_selection->getChild(0);
}

void SceneHighlighter::setScene(SoNode* root)
{
    const GraphReading graph;
    if (m_on)
        m_selection->deselectAll();
    m_scene.reset();
    m_selection->removeAllChildren();
    if (!root)
        return;
    m_scene.reset(root);
    m_selection->addChild(root);
}

void SceneHighlighter::setOn(bool on)
{
    m_on = on;
    if (!on)
        m_selection->deselectAll();
    if (m_action)
        m_action->setVisible(on);
}

void SceneHighlighter::setStyle(const SbColor& color, float width)
{
    m_color = color;
    m_width = width;
    SoInspectorViews::setOutlineStyle(color, width);
    applyStyle();
    if (m_manager)
        m_manager->scheduleRedraw();
}

void SceneHighlighter::applyStyle()
{
    if (!m_action)
        return;
    m_action->setColor(m_color);
    m_action->setLineWidth(m_width);
}

void SceneHighlighter::deselect()
{
    const GraphReading graph;
    m_selection->deselectAll();
}

void SceneHighlighter::highlight(const SoPath* path)
{
    const GraphReading graph;
    if (!m_on || !graph)
        return;
    const QScopedValueRollback<bool> selecting(m_selecting, true);
    m_selection->deselectAll();
    const int top = path && !path->isEmpty() ? m_selection->findChild(path->getHead()) : -1;
    if (top < 0)
        return;
    const SoRef<SoPath> below(new SoPath(m_selection.get()));
    below->append(path->getHead(), top);
    for (int i = 1; i < path->getLength(); ++i)
        below->append(path->getNode(i), path->getIndex(i));
    m_selection->select(below.get());
}

} // namespace mirabo
