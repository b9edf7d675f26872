#pragma once

#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/nodes/SoGroup.h>

#include <memory>

class SoBoundingBoxCache;
class SoGetBoundingBoxAction;
class SoRayPickAction;

/// A group that keeps its effects to itself: what its children set ends with it.
///
/// The box of its content is kept until something below, or something inherited that it depends
/// on, changes; rays that miss the box do not look at the children.
class KALMYR_API SoSeparator : public SoGroup {
    SO_NODE_HEADER(SoSeparator)

public:
    enum CacheEnabled { OFF = 0, ON = 1, AUTO = 2 };

    SoSeparator();
    explicit SoSeparator(int numChildren);
    static void initClass();

    SoSFEnum renderCaching;      ///< keep the render list
    SoSFEnum boundingBoxCaching; ///< keep the box
    SoSFEnum renderCulling;      ///< skip drawing when the box is out of view
    SoSFEnum pickCulling;        ///< skip picking when the ray misses the box

    bool affectsState() const override { return false; }
    /// Traverses the children between a push and a pop of the state.
    void doAction(SoAction* action) override;

    /// For the actions: measures from the cache or the children, and passes rays that meet the box.
    void measure(SoGetBoundingBoxAction* action);
    void rayPick(SoRayPickAction* action);

protected:
    bool noteChange(const SoNotification& notification) override;
    ~SoSeparator() override;

private:
    bool isCulled(SoRayPickAction* action) const;

    std::unique_ptr<SoBoundingBoxCache> m_boxCache;
};
