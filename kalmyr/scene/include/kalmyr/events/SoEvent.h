#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbTime.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/base/SbViewportRegion.h>
#include <kalmyr/core/SoType.h>

/// Something the user did in a window: where, when, and with which modifier keys down.
/// Simple values that the window binding fills in.
class KALMYR_API SoEvent {
public:
    virtual ~SoEvent() = default;

    static SoType getClassTypeId();
    static void initClass();
    virtual SoType getTypeId() const { return getClassTypeId(); }
    bool isOfType(SoType type) const { return getTypeId().isDerivedFrom(type); }

    SbTime getTime() const { return m_time; }
    void setTime(SbTime time) { m_time = time; }

    /// Position of the pointer in window pixels, origin at the lower left.
    const SbVec2s& getPosition() const { return m_position; }
    void setPosition(const SbVec2s& position) { m_position = position; }
    /// The same relative to the viewport's corner.
    SbVec2s getPosition(const SbViewportRegion& region) const
    {
        return m_position - region.getViewportOriginPixels();
    }
    /// The same as fractions of the viewport.
    SbVec2f getNormalizedPosition(const SbViewportRegion& region) const
    {
        return region.normalize(m_position);
    }

    bool wasShiftDown() const { return m_shift; }
    bool wasCtrlDown() const { return m_ctrl; }
    bool wasAltDown() const { return m_alt; }
    void setShiftDown(bool on) { m_shift = on; }
    void setCtrlDown(bool on) { m_ctrl = on; }
    void setAltDown(bool on) { m_alt = on; }

private:
    SbTime m_time;
    SbVec2s m_position;
    bool m_shift = false;
    bool m_ctrl = false;
    bool m_alt = false;
};

/// Type identity of a concrete event.
#define SO_EVENT_HEADER(Class)                                                                     \
public:                                                                                            \
    static SoType getClassTypeId();                                                                \
    static void initClass();                                                                       \
    SoType getTypeId() const override                                                              \
    {                                                                                              \
        return getClassTypeId();                                                                   \
    }                                                                                              \
                                                                                                   \
private:
