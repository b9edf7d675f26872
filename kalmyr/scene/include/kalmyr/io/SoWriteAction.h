#pragma once

#include <kalmyr/actions/SoAction.h>

#include <functional>
#include <memory>

class SoOutput;
class SoPath;
class SoSlicedWrite;
class SoUnknownNode;
class SoVRMLProtoInstance;
class SoVRMLScript;

namespace kalmyr::detail {
class SceneWriter;
struct ValueWriting;
} // namespace kalmyr::detail

/// Writes a graph, or what hangs on a path, as text: Kalmyr text, or what the header of the output
/// says. In VRML97 text types lose their prefix, routes and prototypes are written in its own way,
/// and an unnamed VRMLGroup at the top is left out. Nodes that the format does not know are written
/// all the same: convert the graph before.
///
/// Only fields that differ from their default, are ignored, or were set are written. A node that is
/// named or met more than once gets a DEF name: its own, followed by the instance prefix and a
/// number where another node of the file has it already; the prefix and a number alone without one.
/// Writing what was read gives the same text again.
///
/// Applied to a path it writes a path: the nodes on it, with those of their children that the path
/// takes or that affect it, and everything below the tail.
class KALMYR_API SoWriteAction : public SoAction {
    SO_ACTION_HEADER(SoWriteAction)

public:
    /// Writes to an output of its own: the standard output.
    SoWriteAction();
    /// `out` must outlive the action.
    explicit SoWriteAction(SoOutput* out);
    ~SoWriteAction() override;

    SoOutput* getOutput() const { return m_out; }

    /// Off: the children of the root become the roots of the file. For groups that only hold
    /// together what another file had side by side. On at first.
    void setRootWritten(bool on) { m_rootWritten = on; }
    bool isRootWritten() const { return m_rootWritten; }

    void apply(SoNode* root) override;
    void apply(SoPath* path) override;

    /// For the methods of node types: the node's fields, and its children. The method of SoNode
    /// calls both.
    void writeFields(SoNode* node);
    void writeChildren(SoNode* node);
    /// The declaration, or the text, of a node of unknown type, and its fields and children.
    void writeUnknown(SoUnknownNode* node);
    /// Writes the fields declared for a script, and the values of a prototype's instance.
    void writeScript(SoVRMLScript* node);
    void writeInstance(SoVRMLProtoInstance* node);

protected:
    bool beforeNode(SoNode* node) override;
    void afterNode(SoNode* node) override;

private:
    friend class kalmyr::detail::SceneWriter;
    friend class SoSlicedWrite;
    friend struct kalmyr::detail::ValueWriting;
    void write(SoNode* root, const SoPath* path);

    std::unique_ptr<SoOutput> m_ownOutput;
    SoOutput* m_out; // Not owned unless it is m_ownOutput.
    std::unique_ptr<kalmyr::detail::SceneWriter> m_writer;
    const kalmyr::detail::ValueWriting* m_values = nullptr; ///< written instead of the root
    std::function<bool()> m_goOn;                           ///< as the writer's interruption
    bool m_rootWritten = true;
};
