#pragma once

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/nodes/SoSeparator.h>

#include <functional>
#include <vector>

class SoHandleEventAction;
class SoSelection;

/// A separator with a list of selected objects below it, each named by a path that begins at the
/// selection node.
///
/// Paths follow edits of the graph; what is taken out of it leaves the list, without callbacks. The
/// list holds no reference on the selection node itself.
///
/// A press of the first mouse button that nothing else handled selects by picking, as the policy
/// says. A highlighting renderer draws the paths of the list.
class KALMYR_API SoSelection : public SoSeparator {
    SO_NODE_HEADER(SoSelection)

public:
    enum Policy {
        SINGLE = 0, ///< a pick replaces the selection; a pick of nothing clears it
        TOGGLE = 1, ///< a pick changes the state of what is picked and of nothing else
        SHIFT = 2   ///< as SINGLE; as TOGGLE while the shift key is down
    };
    /// Told after the path went into or out of the list.
    using PathFunction = void(void* userData, SoPath* path);
    /// Told after each call or pick that changed the list.
    using ChangeFunction = void(void* userData, SoSelection* selection);
    /// Chooses what a pick selects: the path given, another one (reference count 0 if new), or
    /// null for nothing.
    using PickFilter = SoPath*(void* userData, SoPath* picked);

    SoSelection();
    static void initClass();

    SoSFEnum policy;

    /// Paths must begin at this node or contain it; what is above is cut off. Others, null, and
    /// indices out of range are broken contracts: nothing changes, an error is posted. Selecting
    /// what is selected already, and taking out what is not, does nothing.
    void select(const SoPath* path);
    /// Selects the first place of the node below; nothing when it is not there.
    void select(SoNode* node);
    void deselect(const SoPath* path);
    void deselect(int index);
    void deselect(SoNode* node);
    void toggle(const SoPath* path);
    void toggle(SoNode* node);
    void deselectAll();

    bool isSelected(const SoPath* path) const;
    /// True when some selected path ends at the node.
    bool isSelected(const SoNode* node) const;
    int getNumSelected() const { return static_cast<int>(m_paths.size()); }
    /// In order of selection. Null for an index out of range. The list keeps the reference.
    SoPath* getPath(int index) const;
    SoPath* operator[](int index) const { return getPath(index); }
    /// Rises with every change of the list, so that renderers see what is new.
    std::uint64_t getSelectionId() const { return m_selectionId; }

    /// A function is removed by the pair it was added with. Callbacks may change the list.
    void addSelectionCallback(PathFunction* function, void* userData = nullptr);
    void removeSelectionCallback(PathFunction* function, void* userData = nullptr);
    void addDeselectionCallback(PathFunction* function, void* userData = nullptr);
    void removeDeselectionCallback(PathFunction* function, void* userData = nullptr);
    void addChangeCallback(ChangeFunction* function, void* userData = nullptr);
    void removeChangeCallback(ChangeFunction* function, void* userData = nullptr);
    void setPickFilterCallback(PickFilter* function, void* userData = nullptr);

    /// Applies a pick under the policy: `picked` may be null for a pick of nothing.
    void applyPick(const SoPath* picked, bool shiftDown);

    /// For the event action: passes to the children, then picks with what is left.
    void handleEvent(SoHandleEventAction* action);

protected:
    bool noteChange(const SoNotification& notification) override;
    ~SoSelection() override;
    void destroy() override;

private:
    template <class Function>
    struct Callback {
        Function* function;
        void* userData;
        bool operator==(const Callback&) const = default;
    };
    SoRef<SoPath> ownPath(const SoPath* path, const char* caller) const;
    SoRef<SoPath> pathTo(SoNode* node);
    int find(const SoPath* path) const;
    class Guard;
    struct Selected {
        SoRef<SoPath> path;
        int length; ///< when selected; a path that was cut off names something else
    };
    void add(SoRef<SoPath> path);
    void removeAt(int index);
    void clear();
    void announceChange(std::uint64_t before);

    std::vector<Selected> m_paths;
    std::uint64_t m_selectionId = 0;
    std::vector<Callback<PathFunction>> m_onSelect;
    std::vector<Callback<PathFunction>> m_onDeselect;
    std::vector<Callback<ChangeFunction>> m_onChange;
    PickFilter* m_filter = nullptr;
    void* m_filterData = nullptr;
};
