#include <kalmyr/gui/SoInspectorViews.h>

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/core/SoPlaces.h>
#include <kalmyr/gui/SoSceneManager.h>
#include <kalmyr/rendering/SoOutline.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

namespace {

struct View {
    SoGLRenderAction* action; // Not owned; only compared.
    SoInspectorViews::RedrawFunction* redraw;
    void* data;
};

struct Views {
    SoOutline outline;
    int outlinedFrom = 0;
    std::vector<View> others;
    SoInspectorViews::ClickFunction* click = nullptr;
    void* clickData = nullptr;

    /// Whose thread the outline belongs to; none without an object. Views that are drawn in other
    /// threads touch nothing of it.
    std::atomic<std::thread::id> thread;

    std::mutex mutex;                      ///< of the managers
    std::vector<SoSceneManager*> managers; // Not owned.
};

/// Never destroyed: scene managers may outlive everything static.
Views& views()
{
    static auto* const all = new Views;
    return *all;
}

bool isKnown(const SoGLRenderAction* action)
{
    const auto& living = views().outline.getActions();
    return std::find(living.begin(), living.end(), action) != living.end();
}

/// The views of actions that live.
std::vector<View>& otherViews()
{
    std::vector<View>& others = views().others;
    std::erase_if(others, [](const View& view) { return !isKnown(view.action); });
    return others;
}

std::vector<SoSceneManager*> managersThatShow(const SoNode* node)
{
    std::vector<SoSceneManager*> managers;
    {
        const std::scoped_lock lock(views().mutex);
        managers = views().managers;
    }
    std::erase_if(managers, [node](const SoSceneManager* manager) {
        return !node || !manager->getSceneGraph()
               || !kalmyr::isBelow(manager->getSceneGraph(), node);
    });
    return managers;
}

void redrawWhatShows(const SoNode* node)
{
    for (SoSceneManager* manager : managersThatShow(node))
        manager->scheduleRedraw();
}

void tellOthers()
{
    for (const View& view : std::vector(otherViews())) {
        if (view.redraw)
            view.redraw(view.data);
    }
}

/// Whatever the density of the pixels.
bool isSamePart(const SbViewportRegion& a, const SbViewportRegion& b)
{
    return a.getWindowSize() == b.getWindowSize()
           && a.getViewportOriginPixels() == b.getViewportOriginPixels()
           && a.getViewportSizePixels() == b.getViewportSizePixels();
}

} // namespace

void SoInspectorViews::addView(SoGLRenderAction* action, RedrawFunction* redraw, void* data)
{
    if (!kalmyr::holds(action, "an action"))
        return;
    removeView(action);
    action->addOutline(views().outline);
    otherViews().push_back({action, redraw, data});
}

void SoInspectorViews::removeView(SoGLRenderAction* action)
{
    const auto isSame = [action](const View& view) { return view.action == action; };
    if (isKnown(action) && std::erase_if(views().others, isSame) > 0)
        action->removeOutline(views().outline);
}

void SoInspectorViews::setOutlineStyle(const SbColor& color, float width)
{
    SoOutline& outline = views().outline;
    outline.setColor(color);
    outline.setLineWidth(width);
    redrawWhatShows(outline.getHead());
    tellOthers();
}

void SoInspectorViews::setOutlined(const SoPath* path, int from)
{
    SoOutline& outline = views().outline;
    if (!path && outline.isEmpty())
        return;
    const SoNode* before = outline.getHead();
    redrawWhatShows(before);
    outline.setPath(path, from);
    views().outlinedFrom = from;
    views().thread = path ? std::this_thread::get_id() : std::thread::id();
    if (outline.getHead() != before)
        redrawWhatShows(outline.getHead());
    tellOthers();
}

const SoPath* SoInspectorViews::getOutlined(int& from)
{
    from = views().outlinedFrom;
    return views().thread == std::this_thread::get_id() ? views().outline.getPath() : nullptr;
}

void SoInspectorViews::setClickFunction(ClickFunction* function, void* data)
{
    views().click = function;
    views().clickData = data;
}

SoNode* SoInspectorViews::findDrawn(SoNode* scene, const SbViewportRegion& region)
{
    SoNode* found = nullptr;
    for (const View& view : otherViews()) {
        SoNode* root = view.action->findRootOf(scene);
        if (root && isSamePart(view.action->getViewportRegion(), region))
            return root;
        found = found ? found : root;
    }
    return found;
}

SoNode* SoInspectorViews::findManaged(SoNode* scene, const SbViewportRegion& region)
{
    const std::vector<SoSceneManager*> managers = managersThatShow(scene);
    const auto same =
        std::find_if(managers.begin(), managers.end(), [&region](const SoSceneManager* manager) {
            return isSamePart(manager->getViewportRegion(), region);
        });
    if (managers.empty())
        return nullptr;
    return (same != managers.end() ? *same : managers.front())->getSceneGraph();
}

SoInspectorViews::Drawing::Drawing(SoGLRenderAction& action)
{
    if (views().thread == std::this_thread::get_id() && action.addOutline(views().outline))
        m_action = &action;
}

SoInspectorViews::Drawing::~Drawing()
{
    // A callback in the scene may have destroyed the action.
    if (m_action && isKnown(m_action))
        m_action->removeOutline(views().outline);
}

void SoInspectorViews::add(SoSceneManager* manager)
{
    const std::scoped_lock lock(views().mutex);
    views().managers.push_back(manager);
}

void SoInspectorViews::remove(SoSceneManager* manager)
{
    const std::scoped_lock lock(views().mutex);
    std::erase(views().managers, manager);
}

void SoInspectorViews::tell(SoGuiRenderArea* area, const SbVec2s& position, Click click)
{
    if (ClickFunction* function = views().click)
        function(views().clickData, area, position, click);
}
