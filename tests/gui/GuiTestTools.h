#pragma once

#include <kalmyr/base/SoRef.h>
#include <kalmyr/events/SoKeyboardEvent.h>
#include <kalmyr/events/SoLocation2Event.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/events/SoMouseWheelEvent.h>
#include <kalmyr/gui/SoGuiExaminerViewer.h>
#include <kalmyr/gui/SoGuiInit.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/shapes/SoCube.h>

#include <gtest/gtest.h>

/// Positions of vectors within a tolerance, with both printed when they differ.
inline testing::AssertionResult near(const SbVec3f& a, const SbVec3f& b, float tolerance)
{
    if ((a - b).length() <= tolerance)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "(" << a[0] << " " << a[1] << " " << a[2] << ") is not ("
                                       << b[0] << " " << b[1] << " " << b[2] << ")";
}

/// Separator { Translation, Cube } with edges of the given length.
inline SoRef<SoSeparator> cubeAt(const SbVec3f& place, float edge = 2)
{
    SoRef<SoSeparator> scene(new SoSeparator);
    auto* translation = new SoTranslation;
    translation->translation = place;
    auto* cube = new SoCube;
    cube->width = cube->height = cube->depth = edge;
    scene->addChild(translation);
    scene->addChild(cube);
    return scene;
}

inline SoMouseButtonEvent button(SoMouseButtonEvent::Button which, bool down, short x, short y)
{
    SoMouseButtonEvent event;
    event.setButton(which);
    event.setState(down ? SoButtonEvent::DOWN : SoButtonEvent::UP);
    event.setPosition(SbVec2s(x, y));
    return event;
}

inline SoLocation2Event motion(short x, short y)
{
    SoLocation2Event event;
    event.setPosition(SbVec2s(x, y));
    return event;
}

inline SoKeyboardEvent keyPress(SoKeyboardEvent::Key key, bool ctrl = false)
{
    SoKeyboardEvent event;
    event.setKey(key);
    event.setState(SoButtonEvent::DOWN);
    event.setCtrlDown(ctrl);
    return event;
}
