#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/core/SoType.h>
#include <kalmyr/elements/SoState.h>

#include <memory>
#include <vector>

class SoAction;
class SoNode;
class SoPath;

/// What an action class does at a node.
using SoActionMethod = void (*)(SoAction *action, SoNode *node);

/// Method table of one action class, indexed by node type. A type without an entry of its own
/// uses the nearest ancestor's; the search is done once per type.
class KALMYR_API SoActionMethods {
public:
    void add(SoType type, SoActionMethod method);
    /// Constant time; never null when SoNode itself has an entry.
    SoActionMethod get(SoType type) const
    {
        const auto i = static_cast<std::size_t>(type.getIndex());
        return i < m_resolved.size() && m_resolved[i] ? m_resolved[i] : resolve(type);
    }

private:
    SoActionMethod resolve(SoType type) const;
    std::vector<SoActionMethod> m_own;
    mutable std::vector<SoActionMethod> m_resolved;
};

/// Base of everything that is done to a graph by traversing it.
///
/// The path to the present node is kept while traversing. A node may be traversed through its
/// children or its node-valued fields.
class KALMYR_API SoAction {
public:
    virtual ~SoAction();
    SoAction(const SoAction &) = delete;
    SoAction &operator=(const SoAction &) = delete;

    /// Type of the action class, for isOfType tests in nodes.
    virtual SoType getTypeId() const = 0;
    bool isOfType(SoType type) const { return getTypeId().isDerivedFrom(type); }
    static SoType getClassTypeId();
    static void initClass();

    /// Applies to everything below `root`.
    virtual void apply(SoNode *root);
    /// Applies along a path and to everything below its tail.
    virtual void apply(SoPath *path);

    SoState *getState() const { return m_state.get(); }

    /// Does at `node` what the method table says. `index` is its index among the children of the
    /// present node, -1 for a node reached by a field.
    void traverse(SoNode *node, int index = -1);

    /// Ends the traversal as soon as every group sees it.
    void setTerminated(bool on) { m_terminated = on; }
    bool hasTerminated() const { return m_terminated; }

    /// Depth of the present node below the root of the application; 0 at the root.
    int getCurDepth() const { return static_cast<int>(m_stack.size()) - 1; }
    SoNode *getCurNode(int fromTail = 0) const { return m_stack[m_stack.size() - 1 - static_cast<std::size_t>(fromTail)].node; }
    /// The way from the root to the present node, as a new path (reference count 0).
    SoPath *getCurPath() const;

    /// When applied to a path: whether the present node lies on it above its tail, and which child
    /// index comes next; a group then traverses only what affects that child.
    bool isOnPath(int &nextChild) const;

protected:
    SoAction();
    virtual const SoActionMethods &methods() const = 0;
    /// Called around the traversal of one apply.
    virtual void beginTraversal(SoNode *root);
    virtual void endTraversal(SoNode *root);

private:
    struct Place {
        SoNode *node;
        int index;
    };
    std::unique_ptr<SoState> m_state;
    std::vector<Place> m_stack;
    const SoPath *m_path = nullptr;
    bool m_terminated = false;
};

/// Type identity and method table of a concrete action.
#define SO_ACTION_HEADER(Class)                                                                    \
public:                                                                                            \
    static SoType getClassTypeId() { return s_typeId; }                                            \
    SoType getTypeId() const override { return s_typeId; }                                         \
    /** Tells what the action does at nodes of a type. */                                          \
    static void addMethod(SoType type, SoActionMethod method) { s_methods.add(type, method); }     \
    static void initClass();                                                                       \
                                                                                                   \
protected:                                                                                         \
    const SoActionMethods &methods() const override { return s_methods; }                          \
                                                                                                   \
private:                                                                                           \
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
