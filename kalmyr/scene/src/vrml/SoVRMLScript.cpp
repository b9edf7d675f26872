#include <kalmyr/vrml/SoVRMLScript.h>

#include <kalmyr/core/SoForeignFields.h>
#include <kalmyr/core/SoNodeCopier.h>

namespace {

SoType s_scriptType;

} // namespace

SoType SoVRMLScript::getClassTypeId()
{
    return s_scriptType;
}

void SoVRMLScript::initClass()
{
    s_scriptType =
        SoType::createType(SoNode::getClassTypeId(), SbName("VRMLScript"),
                           []() -> void* { return static_cast<SoNode*>(new SoVRMLScript); });
}

SoVRMLScript::SoVRMLScript() : m_declared(this)
{
    m_declared.add(SbName("url"), &url);
    m_declared.add(SbName("directOutput"), &directOutput);
    m_declared.add(SbName("mustEvaluate"), &mustEvaluate);
    url.setFieldType(SoField::EXPOSED);
}

SoVRMLScript::~SoVRMLScript() = default;

void SoVRMLScript::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    m_declared.copy(static_cast<const SoVRMLScript*>(from)->m_declared, copier);
    SoForeignFields::copy(from, this, copier);
    if (!from->getName().isEmpty())
        setName(from->getName());
}
