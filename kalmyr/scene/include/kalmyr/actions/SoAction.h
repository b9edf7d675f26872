#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/core/SoType.h>
#include <kalmyr/elements/SoState.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

class SoAction;
class SoChildList;
class SoNode;
class SoPath;

/// The method of an action class at a node.
using SoActionMethod = void (*)(SoAction* action, SoNode* node);

/// Method table of one action class, indexed by node type. A type without an entry of its own uses
/// the nearest ancestor's. The search is done once per type, before the first traversal that
/// follows the registration of types or methods.
///
/// Threads: several threads may traverse at once; registering needs the only writer.
class KALMYR_API SoActionMethods {
public:
    SoActionMethods() = default;
    SoActionMethods(const SoActionMethods&) = delete;
    SoActionMethods& operator=(const SoActionMethods&) = delete;

    /// Sets or replaces the entry of a type.
    void add(SoType type, SoActionMethod method);

    /// Constant time; never null: a node type without any entry gets a method that does nothing.
    SoActionMethod get(SoType type) const
    {
        const auto i = static_cast<std::size_t>(type.getIndex());
        return i < m_resolved.size() && m_resolved[i] ? m_resolved[i] : find(type);
    }

    /// Brings the table up to date with the registered types. Called before every traversal.
    void prepare() const;

private:
    SoActionMethod find(SoType type) const;

    std::vector<SoActionMethod> m_own;
    mutable std::vector<SoActionMethod> m_resolved; ///< by type index; null for what is no node
    mutable std::atomic<int> m_preparedFor = 0; ///< number of types when last brought up to date
    mutable std::mutex m_mutex;
};

/// Base of everything that is done to a graph by traversing it.
///
/// The way from the root to the present node is kept while traversing. A node may be traversed
/// through its parent's children or through a node-valued field.
///
/// Graphs may be of any depth: when the thread's stack has been used up to a limit the traversal
/// goes on, in the same thread, on a stack of its own.
class KALMYR_API SoAction {
public:
    /// Where the present node stands when the action is applied to a path.
    enum PathMode : std::uint8_t {
        NO_PATH,    ///< applied to a node
        IN_PATH,    ///< on the path, above its tail
        BELOW_PATH, ///< the tail, or anything below
        OFF_PATH    ///< beside the path; visited only because it may affect the state
    };

    virtual ~SoAction();
    SoAction(const SoAction&) = delete;
    SoAction& operator=(const SoAction&) = delete;

    /// Type of the action class, for isOfType tests in nodes.
    virtual SoType getTypeId() const = 0;
    bool isOfType(SoType type) const { return getTypeId().isDerivedFrom(type); }
    static SoType getClassTypeId();
    static void initClass();

    /// Applies to `root` and everything below. A null root, an empty path, and an action that is
    /// being applied already are broken contracts: nothing is traversed, an error is posted.
    virtual void apply(SoNode* root);
    /// Applies along a path and to everything below its tail. Beside the path only nodes that
    /// affect the state are visited, and only those that come before the path's next node.
    virtual void apply(SoPath* path);

    SoState* getState() const { return m_state.get(); }

    /// Does at `node` what the method table says. `index` is its index among the children of the
    /// present node, -1 for a node reached by a field. Called by nodes for what is below them; a
    /// null node is ignored.
    void traverse(SoNode* node, int index = -1);

    /// Traverses all children in order, until the action is terminated; on a path only those that
    /// matter. What a group does with its children.
    void traverseChildren(const SoChildList& children);

    /// Ends the traversal as soon as every group sees it.
    void setTerminated(bool on) { m_terminated = on; }
    bool hasTerminated() const { return m_terminated; }

    /// Depth of the present node below the root of the application; 0 at the root.
    int getCurDepth() const { return static_cast<int>(m_stack.size()) - 1; }
    /// The present node (0) or one above it. Null beyond the root; `fromTail` is not negative.
    SoNode* getCurNode(int fromTail = 0) const
    {
        if (!kalmyr::holds(fromTail >= 0, "fromTail >= 0"))
            return nullptr;
        const auto up = static_cast<std::size_t>(fromTail) + 1;
        return up <= m_stack.size() ? m_stack[m_stack.size() - up].node : nullptr;
    }
    /// The way from the root to the present node, as a new path (reference count 0).
    SoPath* getCurPath() const;

    PathMode getPathMode() const { return m_pathMode; }
    /// The path that the action is applied to; null when applied to a node.
    const SoPath* getPathAppliedTo() const { return m_path; }

    /// True when the present node lies on the path above its tail. `nextChild` becomes the index of
    /// the path's next node, -1 when that is reached by a field. A switch on the path takes that
    /// child whatever it would choose by itself.
    bool isOnPath(int& nextChild) const;

    /// Visits of nodes during the latest application.
    std::uint64_t getNumVisits() const { return m_numVisits; }

protected:
    SoAction();
    virtual const SoActionMethods& methods() const = 0;
    /// Called around the traversal of one application, the state being at its defaults.
    virtual void beginTraversal(SoNode* root);
    virtual void endTraversal(SoNode* root);

    /// Asks for calls of beforeNode() and afterNode(); off at first.
    void setHooked(bool on) { m_hooked = on; }
    /// Called before the method of each node; false leaves the node and what is below it out.
    virtual bool beforeNode(SoNode*) { return true; }
    /// Called after the method of each node that was not left out.
    virtual void afterNode(SoNode*) {}

    /// How paths are applied. TO_TAIL: nothing below the tail is visited, and tailReached() is
    /// called when the tail passes on to its children, or after its method. STATE_ABOVE_TAIL: the
    /// nodes beside and above the tail only do doAction(), so that just the tail acts.
    enum PathUse : std::uint8_t { WHOLE, TO_TAIL, STATE_ABOVE_TAIL };
    void setPathUse(PathUse use) { m_pathUse = use; }
    virtual void tailReached() {}

    /// Whether `node` is the present node or one on the way to it. Constant amortised time.
    bool isOnWay(const SoNode* node);

    /// The default entry of most tables: node->doAction(action).
    static void callDoAction(SoAction* action, SoNode* node);

private:
    struct Place {
        SoNode* node;
        int index;
    };
    void leave()
    {
        m_stack.pop_back();
        if (m_stack.size() < m_lowest)
            m_lowest = m_stack.size();
    }
    void run(SoNode* root, const SoPath* path);
    void visit(SoNode* node, int index);
    void giveUp();
    void visitCarefully(SoNode* node, int index);
    void visitWithMode(SoNode* node, int index);
    void act(SoNode* node);
    void reportTail();
    bool isSpecial() const { return m_hooked || m_path; }
    PathMode modeBelow(const SoNode* node, int index) const;

    std::unique_ptr<SoState> m_state;
    std::vector<Place> m_stack;
    std::size_t m_lowest = 0;      ///< length of the stack's part that stood since m_listed
    std::vector<SoNode*> m_listed; ///< nodes of the stack that are in m_onWay
    std::unordered_map<const SoNode*, int> m_onWay; ///< with how often they are on the way
    const SoActionMethods* m_methods = nullptr;
    const SoPath* m_path = nullptr;     // Not owned; held while applied.
    const char* m_stackLimit = nullptr; ///< the traversal changes stacks below this address
    std::uint64_t m_numVisits = 0;
    PathMode m_pathMode = NO_PATH;
    PathUse m_pathUse = WHOLE;
    bool m_hooked = false;
    bool m_terminated = false;
    bool m_tailReported = false;
};

/// Type identity and method table of a concrete action. The class defines initMethods(), which adds
/// the methods that it brings along, and ends its source with SO_ACTION_SOURCE.
#define SO_ACTION_HEADER(Class)                                                                    \
public:                                                                                            \
    static SoType getClassTypeId()                                                                 \
    {                                                                                              \
        return s_typeId;                                                                           \
    }                                                                                              \
    SoType getTypeId() const override                                                              \
    {                                                                                              \
        return s_typeId;                                                                           \
    }                                                                                              \
    /** Tells what the action does at nodes of a type. */                                          \
    static void addMethod(SoType type, SoActionMethod method)                                      \
    {                                                                                              \
        s_methods.add(type, method);                                                               \
    }                                                                                              \
    static void initClass();                                                                       \
                                                                                                   \
protected:                                                                                         \
    const SoActionMethods& methods() const override                                                \
    {                                                                                              \
        return s_methods;                                                                          \
    }                                                                                              \
                                                                                                   \
private:                                                                                           \
    static void initMethods();                                                                     \
    static SoType s_typeId;                                                                        \
    static SoActionMethods s_methods;

#define SO_ACTION_SOURCE(Class, Parent, name)                                                      \
    SoType Class::s_typeId;                                                                        \
    SoActionMethods Class::s_methods;                                                              \
    void Class::initClass()                                                                        \
    {                                                                                              \
        s_typeId = SoType::createType(Parent::getClassTypeId(), SbName(name));                     \
        initMethods();                                                                             \
    }

/// For a class derived from a concrete action: a type of its own, the table of its parent.
#define SO_DERIVED_ACTION_HEADER(Class)                                                            \
public:                                                                                            \
    static SoType getClassTypeId()                                                                 \
    {                                                                                              \
        return s_typeId;                                                                           \
    }                                                                                              \
    SoType getTypeId() const override                                                              \
    {                                                                                              \
        return s_typeId;                                                                           \
    }                                                                                              \
    static void initClass();                                                                       \
                                                                                                   \
private:                                                                                           \
    static SoType s_typeId;

#define SO_DERIVED_ACTION_SOURCE(Class, Parent, name)                                              \
    SoType Class::s_typeId;                                                                        \
    void Class::initClass()                                                                        \
    {                                                                                              \
        s_typeId = SoType::createType(Parent::getClassTypeId(), SbName(name));                     \
    }
