#pragma once

class SoNode;

namespace mirabo {

/// A node that a command will need again, without showing in the node's reference count: it holds a
/// reference only while it has the last one. Null once the node has died in spite of that, its last
/// owner being somebody who let go of it later.
///
/// Copies are further keepers of the same node, without its reference.
class KeptNode {
public:
    KeptNode() = default;
    explicit KeptNode(SoNode* node);
    KeptNode(const KeptNode& other) : KeptNode(other.get()) {}
    KeptNode(KeptNode&& other) noexcept { swap(other); }
    KeptNode& operator=(KeptNode other) noexcept
    {
        swap(other);
        return *this;
    }
    ~KeptNode();

    SoNode* get() const;
    SoNode* operator->() const { return get(); }
    explicit operator bool() const { return get() != nullptr; }

    /// Holds the node, whoever else does, until settle(): to be called before an edit.
    void hold();
    /// Lets go of the node unless nobody else holds it; then it stays held.
    void settle();
    bool isHeld() const { return m_held; }

    /// A node under watch, shared by all that keep it.
    struct Entry;

private:
    void swap(KeptNode& other) noexcept;

    Entry* m_entry = nullptr;
    bool m_held = false;
};

} // namespace mirabo
