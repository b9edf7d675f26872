#pragma once

#include "support/HostScene.h"

#include <kalmyr/actions/SoGetMatrixAction.h>
#include <kalmyr/actions/SoHandleEventAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/draggers/SoDragger.h>
#include <kalmyr/events/SoKeyboardEvent.h>
#include <kalmyr/events/SoLocation2Event.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/tilevex/TvSymTool.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>

#include <gtest/gtest.h>

/// A scene in a window of 1000 x 1000 pixels, and a hand with a mouse. At first it is seen straight
/// from the front, 10 units high: 100 pixels a unit, the origin in the middle.
class DragStage : public testing::Test {
protected:
    static constexpr short kSize = 1000;

    void SetUp() override
    {
        SoDB::init();
        for (const char* name : {"Copies", "Draggers", "Manips"})
            ASSERT_TRUE(TvSymTool::initModule(name)) << name;
        root = new SoSeparator;
        auto* front = new SoOrthographicCamera;
        front->height = 10;
        front->position = SbVec3f(0, 0, 20);
        front->farDistance = 100;
        setCamera(front);
    }
    void TearDown() override
    {
        root = nullptr;
        action = nullptr;
        camera = nullptr;
        for (const char* name : {"Copies", "Manips", "Draggers"})
            TvSymTool::finishModule(name);
    }
    void setCamera(SoCamera* by)
    {
        if (camera)
            root->replaceChild(0, by);
        else
            root->addChild(by);
        camera = by;
        action = std::make_unique<SoHandleEventAction>(region);
    }

    void send(SoEvent& event, SbVec2s at)
    {
        event.setPosition(at);
        event.setShiftDown(shift);
        event.setCtrlDown(ctrl);
        action->setEvent(&event);
        action->apply(root.get());
    }
    void press(SbVec2s at, SoButtonEvent::State state = SoButtonEvent::DOWN)
    {
        SoMouseButtonEvent event;
        event.setButton(SoMouseButtonEvent::BUTTON1);
        event.setState(state);
        send(event, at);
    }
    void moveTo(SbVec2s at)
    {
        SoLocation2Event event;
        send(event, at);
    }
    void release(SbVec2s at) { press(at, SoButtonEvent::UP); }
    void drag(SbVec2s from, SbVec2s to)
    {
        press(from);
        moveTo(to);
        release(to);
    }
    void pressKey(SoKeyboardEvent::Key key)
    {
        SoKeyboardEvent event;
        event.setKey(key);
        event.setState(SoButtonEvent::DOWN);
        send(event, SbVec2s(0, 0));
    }

    /// Straight from the front.
    static SbVec2s at(float x, float y)
    {
        return {static_cast<short>(std::lround(500 + 100 * x)),
                static_cast<short>(std::lround(500 + 100 * y))};
    }
    SbViewVolume volume() const { return camera->getViewVolume(region); }
    SbVec2f onScreen(const SbVec3f& point) const
    {
        SbVec3f normalized;
        volume().projectToScreen(point, normalized);
        return {normalized[0] * kSize, normalized[1] * kSize};
    }
    SbLine sight(SbVec2s at) const
    {
        SbLine line;
        volume().projectPointToLine(SbVec2f(at[0], at[1]) / float(kSize), line);
        return line;
    }

    struct Held {
        SoRef<SoPath> path; ///< to the shape
        SoDragHandle* handle;
        SbVec3f inShape; ///< the point that was taken
    };
    /// What a press there would take.
    std::optional<Held> find(SbVec2s at) const
    {
        SoRayPickAction pick(region);
        pick.setPoint(at);
        pick.apply(root.get());
        const SoPickedPoint* point = pick.getPickedPoint();
        for (int i = 0; point && i < point->getPath()->getLength(); ++i) {
            SoNode* node = point->getPath()->getNode(i);
            if (!node->isOfType(SoDragHandle::getClassTypeId()))
                continue;
            Held held{point->getPath(), static_cast<SoDragHandle*>(node), {}};
            const SbVec3f taken = sight(at).getClosestPoint(point->getPoint());
            held.inShape = point->getWorldToObject().point(taken);
            return held;
        }
        return std::nullopt;
    }
    /// Where that point is now.
    static SbVec3f placeOf(const Held& held)
    {
        SoGetMatrixAction matrix;
        matrix.apply(held.path.get());
        return matrix.getMatrix().point(held.inShape);
    }

    SbViewportRegion region{kSize, kSize};
    SoRef<SoSeparator> root;
    SoRef<SoCamera> camera;
    std::unique_ptr<SoHandleEventAction> action;
    bool shift = false;
    bool ctrl = false;
};
