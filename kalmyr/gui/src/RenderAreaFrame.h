#pragma once

#include "KeptAlive.h"

#include <kalmyr/gui/SoGuiRenderArea.h>

/// While the scene of a render area is drawn or gets an event: what the program calls from in there
/// finds the area alive, and knows that its graph is being traversed.
class SoGuiRenderArea::Frame {
public:
    explicit Frame(SoGuiRenderArea* area) : m_area(area), m_depth(area->m_frames) { ++m_depth; }
    ~Frame() { --m_depth; }

private:
    const KeptAlive<SoGuiRenderArea> m_area;
    int& m_depth;
};
