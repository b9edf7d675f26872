#pragma once

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/base/SbViewportRegion.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoLightPath.h>

#include <memory>
#include <vector>

class SoEvent;

/// Offers an event to the nodes below, in order of traversal, until one handles it. A node may grab
/// all events until it lets go.
class KALMYR_API SoHandleEventAction : public SoAction {
    SO_ACTION_HEADER(SoHandleEventAction)

public:
    explicit SoHandleEventAction(const SbViewportRegion& region);
    ~SoHandleEventAction() override;

    void setViewportRegion(const SbViewportRegion& region);
    const SbViewportRegion& getViewportRegion() const { return m_region; }

    /// Not owned; must live while the action is applied, which needs an event.
    void setEvent(const SoEvent* event);
    const SoEvent* getEvent() const { return m_event; }

    /// A node that has used the event says so; the traversal ends.
    void setHandled();
    bool isHandled() const { return m_handled; }

    /// The event goes to the grabber first, with the state that led to it, and to nobody else when
    /// it handles it. Called while traversing, or with any node. Keeps a reference.
    void setGrabber(SoNode* node);
    void releaseGrabber();
    SoNode* getGrabber() const;

    /// The graph to be picked in; by default the root of the application.
    void setPickRoot(SoNode* root);
    SoNode* getPickRoot() const { return m_pickRoot.get(); }
    void setPickRadius(float pixels);

    /// Returns the point under the event's position. Found at the first call for the event, then
    /// kept; null when nothing.
    const SoPickedPoint* getPickedPoint();
    /// All of it, nearest first.
    const std::vector<SoPickedPoint>& getPickedPoints();

    using SoAction::apply;
    void apply(SoNode* root) override;

protected:
    void beginTraversal(SoNode* root) override;

private:
    void offerToGrabber(SoNode* root);
    SoRayPickAction& pick(bool all);

    SbViewportRegion m_region;
    const SoEvent* m_event = nullptr; // Not owned.
    SoRef<SoNode> m_grabber;
    SoLightPath m_grabPath; ///< way to the grabber; empty when not known
    SoRef<SoNode> m_pickRoot;
    SoNode* m_root = nullptr; // Not owned; of the present application.
    std::unique_ptr<SoRayPickAction> m_pick;
    enum { NOT_PICKED, PICKED_NEAREST, PICKED_ALL } m_picked = NOT_PICKED;
    float m_pickRadius = SoRayPickAction::kDefaultRadius;
    bool m_handled = false;
};
