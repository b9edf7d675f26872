#include <kalmyr/io/SoWriteAction.h>

#include "NodeText.h"
#include "SoSceneWriter.h"

#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoUnknownNode.h>
#include <kalmyr/nodes/SoFile.h>
#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/vrml/SoVRMLInline.h>
#include <kalmyr/vrml/SoVRMLProto.h>
#include <kalmyr/vrml/SoVRMLScript.h>

SO_ACTION_SOURCE(SoWriteAction, SoAction, "WriteAction")

namespace {

void writeAll(SoAction* action, SoNode* node)
{
    auto* write = static_cast<SoWriteAction*>(action);
    write->writeFields(node);
    if (!kalmyr::detail::SceneWriter::hasChildrenField(node))
        write->writeChildren(node);
}

/// For nodes whose children come from another file.
void writeFieldsOnly(SoAction* action, SoNode* node)
{
    static_cast<SoWriteAction*>(action)->writeFields(node);
}

bool hasForeignChildren(const SoNode* node)
{
    return node->isOfType(SoVRMLInline::getClassTypeId())
           || node->isOfType(SoWWWInline::getClassTypeId())
           || node->isOfType(SoFile::getClassTypeId())
           || node->isOfType(SoVRMLProtoInstance::getClassTypeId());
}

void writeUnknown(SoAction* action, SoNode* node)
{
    static_cast<SoWriteAction*>(action)->writeUnknown(static_cast<SoUnknownNode*>(node));
}

void writeScript(SoAction* action, SoNode* node)
{
    static_cast<SoWriteAction*>(action)->writeScript(static_cast<SoVRMLScript*>(node));
}

void writeInstance(SoAction* action, SoNode* node)
{
    static_cast<SoWriteAction*>(action)->writeInstance(static_cast<SoVRMLProtoInstance*>(node));
}

} // namespace

void SoWriteAction::initMethods()
{
    addMethod(SoNode::getClassTypeId(), writeAll);
    addMethod(SoVRMLInline::getClassTypeId(), writeFieldsOnly);
    addMethod(SoWWWInline::getClassTypeId(), writeFieldsOnly);
    addMethod(SoFile::getClassTypeId(), writeFieldsOnly);
    addMethod(SoUnknownNode::getClassTypeId(), ::writeUnknown);
    addMethod(SoVRMLScript::getClassTypeId(), ::writeScript);
    addMethod(SoVRMLProtoInstance::getClassTypeId(), ::writeInstance);
}

SoWriteAction::SoWriteAction() : m_ownOutput(std::make_unique<SoOutput>()), m_out(m_ownOutput.get())
{
    setHooked(true);
}

SoWriteAction::SoWriteAction(SoOutput* out) : m_out(out)
{
    setHooked(true);
}

SoWriteAction::~SoWriteAction() = default;

void SoWriteAction::apply(SoNode* root)
{
    if (kalmyr::holds(root, "something to apply the action to"))
        write(root, nullptr);
}

void SoWriteAction::apply(SoPath* path)
{
    if (!kalmyr::holds(path && !path->isEmpty(), "something to apply the action to"))
        return;
    // What hangs on a field, stands inside a kit or comes from another file has no index in the
    // text; the path ends above it.
    int length = 1;
    while (length < path->getLength() && path->getIndex(length) >= 0
           && path->getNode(length - 1)->getChildren()
           && !hasForeignChildren(path->getNode(length - 1)))
        ++length;
    const SoRef<SoPath> shown(path->copy(0, length));
    write(path->getHead(), shown.get());
}

void SoWriteAction::write(SoNode* root, const SoPath* path)
{
    const SoRef<SoNode> held(root);
    m_writer = std::make_unique<kalmyr::detail::SceneWriter>(*this, *m_out);
    if (path)
        m_writer->keepOnly(*path);
    else if (!m_rootWritten)
        m_writer->leaveOutRoot();
    if (m_goOn)
        m_writer->setInterruption(m_goOn);
    SoAction::apply(root);
    if (!m_writer->isInterrupted()) {
        m_writer->startWriting();
        if (path)
            m_writer->beginPath();
        SoAction::apply(root);
        if (path)
            m_writer->endPath(*path);
    }
    if (!m_writer->isInterrupted())
        m_writer->finish();
    m_writer.reset();
}

struct kalmyr::detail::ValueWriting {
    const SoNode* place; ///< what the action is applied to, being able to write nodes only then
    const WriteValue& write;

    static std::string run(const WriteValue& write)
    {
        SoOutput out;
        out.setBuffer();
        out.setHeaderString("");
        SoWriteAction action(&out);
        const SoRef<SoNode> place(new SoGroup);
        const ValueWriting values{place.get(), write};
        action.m_values = &values;
        action.m_rootWritten = true;
        action.write(place.get(), nullptr);
        std::string text(out.getText());
        while (!text.empty() && text.back() == '\n')
            text.pop_back();
        return text;
    }
};

std::string kalmyr::detail::writeNodeText(const WriteValue& write)
{
    return ValueWriting::run(write);
}

bool SoWriteAction::beforeNode(SoNode* node)
{
    if (m_values && m_values->place == node) {
        m_writer->values(m_values->write);
        return false;
    }
    return m_writer->enter(node);
}

void SoWriteAction::afterNode(SoNode* node)
{
    m_writer->leave(node);
}

void SoWriteAction::writeFields(SoNode* node)
{
    m_writer->fields(node);
}

void SoWriteAction::writeChildren(SoNode* node)
{
    m_writer->children(node);
}

void SoWriteAction::writeUnknown(SoUnknownNode* node)
{
    m_writer->kept().unknown(node);
}

void SoWriteAction::writeScript(SoVRMLScript* node)
{
    m_writer->kept().script(node);
}

void SoWriteAction::writeInstance(SoVRMLProtoInstance* node)
{
    m_writer->instance(node);
}
