#include "mirabo/extender/private/FieldPresentations.h"

#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoMFInstanceParameter.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoMFUniformShaderParameter.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/fields/SoSFArray.h>
#include <kalmyr/fields/SoSFBufferObject.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>

#include <algorithm>
#include <cstdint>

namespace mirabo {

namespace {

QString typeName(const SoNode* node)
{
    return QString::fromUtf8(node->getTypeId().getName().getString());
}

/// Fields that hold nodes are looked at in the overview.
class NodePresentation : public MrbFieldPresentation {
public:
    Shown shown(const SoField& field) const override
    {
        const SoNode* node = static_cast<const SoSFNode&>(field).getValue();
        return {node ? typeName(node) : QString()};
    }
    QString clipboardText(const SoField& field) const override { return shown(field).text; }
    bool isEditable(const SoField&) const override { return false; }
    bool isWatchable(const SoField&) const override { return false; }
};

class NodeListPresentation final : public NodePresentation {
public:
    Shown shown(const SoField& field) const override
    {
        const auto& list = static_cast<const SoMNodeField&>(field);
        const int num = list.getNum();
        if (num == 0)
            return MrbFieldPresentation::shown(field);
        QString text;
        for (int i = 0; i < std::min(num, kMaxShownValues); ++i)
            if (const SoNode* node = list[i])
                text += (text.isEmpty() ? "" : ", ") + typeName(node);
        return {!text.isEmpty() && num > kMaxShownValues ? text + "..." : text};
    }
};

/// Intended: nothing is listed but that there are parameters.
class InstanceListPresentation final : public MrbFieldPresentation {
public:
    Shown shown(const SoField& field) const override
    {
        const int num = static_cast<const SoMField&>(field).getNum();
        return {num > kMaxShownValues ? QString("...") : QString()};
    }
    QString clipboardText(const SoField& field) const override { return shown(field).text; }
};

class ArrayPresentation final : public MrbFieldPresentation {
public:
    Shown shown(const SoField& field) const override
    {
        return isTooBig(field) ? Shown{"ARRAY TOO BIG"} : MrbFieldPresentation::shown(field);
    }
    bool isEditable(const SoField& field) const override
    {
        return !isTooBig(field) && MrbFieldPresentation::isEditable(field);
    }

private:
    static bool isTooBig(const SoField& field)
    {
        const SbVec3i32 d = static_cast<const SoSFArray&>(field).getDimensions();
        return static_cast<std::int64_t>(d[0]) * d[1] * d[2] > kMaxShownArrayElements;
    }
};

class BufferPresentation final : public MrbFieldPresentation {
public:
    Shown shown(const SoField& field) const override
    {
        const bool isHeld = static_cast<const SoSFBufferObject&>(field).getValue() != nullptr;
        return {isHeld ? QString("SoBufferObject") : QString()};
    }
    bool isEditable(const SoField&) const override { return false; }
};

class ImagePresentation final : public MrbFieldPresentation {
public:
    Shown shown(const SoField&) const override { return {QString(), true}; }
    QString toolTip(const SoField& field, const QString&) const override
    {
        SbVec2i32 size;
        int components = 0;
        static_cast<const SoSFImage&>(field).getValue(size, components);
        return QString("%1 x %2 pixels, %3 components").arg(size[0]).arg(size[1]).arg(components);
    }
};

} // namespace

std::vector<std::pair<SoType, std::shared_ptr<const MrbFieldPresentation>>> builtInPresentations()
{
    const auto nodes = std::make_shared<const NodeListPresentation>();
    return {{SoSFNode::getClassTypeId(), std::make_shared<const NodePresentation>()},
            {SoMFNode::getClassTypeId(), nodes},
            {SoMFUniformShaderParameter::getClassTypeId(), nodes},
            {SoMFInstanceParameter::getClassTypeId(),
             std::make_shared<const InstanceListPresentation>()},
            {SoSFArray::getClassTypeId(), std::make_shared<const ArrayPresentation>()},
            {SoSFBufferObject::getClassTypeId(), std::make_shared<const BufferPresentation>()},
            {SoSFImage::getClassTypeId(), std::make_shared<const ImagePresentation>()}};
}

} // namespace mirabo
