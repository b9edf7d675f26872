#pragma once

#include <kalmyr/base/SbBox.h>
#include <kalmyr/manips/SoManip.h>
#include <kalmyr/nodes/SoTransform.h>

#include <cstdint>
#include <mutex>

/// A transform that the user can take hold of, by a box with handles about what it transforms: see
/// SoTransformDragger. What it transforms are the nodes that follow it in the same group.
class KALMYR_VISIBLE SoTransformManip : public SoTransform {
    SO_NODE_HEADER(SoTransformManip)

public:
    SoTransformManip();
    static void initClass();

    SoDragger* getDragger() const { return m_manip.dragger(); }

    SoChildList* getInternalChildren() const override { return m_manip.children(); }
    void doAction(SoAction* action) override;

protected:
    /// For derived classes, whose constructor ends with followFields().
    explicit SoTransformManip(SoDragger* dragger);
    ~SoTransformManip() override;
    void followFields();

    virtual void takeFromDragger();
    virtual void giveToDragger();
    /// The matrix splits in three: to the dragger's own space, its motion, and from around the
    /// dragger to around the manipulator.
    virtual SbMatrix getOwnSpace() const { return SbMatrix::identity(); }
    virtual SbMatrix getDraggerPlace() const { return SbMatrix::identity(); }

private:
    void measure(SoAction* action);
    SbBox3f surrounded() const;

    mutable kalmyr::detail::ManipDragger m_manip;
    // The bounds of the nodes that are transformed, measured anew when something in the group has
    // changed; several threads may traverse at once.
    mutable std::mutex m_mutex;
    const SoNode* m_parent = nullptr; // Not owned; only compared.
    std::uint64_t m_parentId = 0;
    SbBox3f m_box;
};
