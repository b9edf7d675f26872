#include "mirabo/overview/FieldText.h"

#include <kalmyr/core/SoFieldIO.h>
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
#include <string>

namespace mirabo {

namespace {

QString toQString(const SbString& text)
{
    return QString::fromUtf8(text.getString(), static_cast<int>(text.getLength()));
}

QString typeName(const SoNode* node)
{
    return QString::fromUtf8(node->getTypeId().getName().getString());
}

/// As files have it, but of nodes only their names: whole graphs are nothing to read in a row.
QString fullText(const SoField& field)
{
    std::string text;
    SoFieldWriter writer(text);
    field.evaluate();
    field.writeValue(writer);
    return toQString(SbString(text));
}

bool isInstanceList(const SoField& field)
{
    return field.isOfType(SoMFInstanceParameter::getClassTypeId());
}

/// A list of nodes that is shown by the nodes' types.
bool isNodeList(const SoField& field)
{
    return field.isOfType(SoMFNode::getClassTypeId())
           || field.isOfType(SoMFUniformShaderParameter::getClassTypeId());
}

bool isTooBig(const SoSFArray& field)
{
    const SbVec3i32 d = field.getDimensions();
    return static_cast<std::int64_t>(d[0]) * d[1] * d[2] > kMaxShownArrayElements;
}

QString nodeNames(const SoMNodeField& field, int count)
{
    QString text;
    for (int i = 0; i < count; ++i)
        if (const SoNode* node = field[i])
            text += typeName(node) + ", ";
    return text;
}

QString valueTexts(const SoMField& field, int count)
{
    QString text;
    std::string value;
    SoFieldWriter writer(value);
    for (int i = 0; i < count; ++i) {
        value.clear();
        field.write1Value(i, writer);
        text += toQString(SbString(value)) + ", ";
    }
    return text;
}

/// The first values of a multiple-value field, each followed by a separator.
QString listText(const SoMField& field, int count)
{
    if (isInstanceList(field))
        return ",";
    if (isNodeList(field))
        return nodeNames(static_cast<const SoMNodeField&>(field), count);
    return valueTexts(field, count);
}

FieldText singleText(const SoField& field)
{
    if (field.isOfType(SoSFNode::getClassTypeId())) {
        const SoNode* node = static_cast<const SoSFNode&>(field).getValue();
        return {node ? typeName(node) : QString()};
    }
    if (field.isOfType(SoSFArray::getClassTypeId())
        && isTooBig(static_cast<const SoSFArray&>(field)))
        return {"ARRAY TOO BIG"};
    if (field.isOfType(SoSFBufferObject::getClassTypeId())) {
        const bool held = static_cast<const SoSFBufferObject&>(field).getValue() != nullptr;
        return {held ? QString("SoBufferObject") : QString()};
    }
    if (field.isOfType(SoSFImage::getClassTypeId()))
        return {QString(), true};
    return {fullText(field)};
}

QString imageText(const SoSFImage& field)
{
    SbVec2i32 size;
    int components = 0;
    field.getValue(size, components);
    return QString("%1 x %2 pixels, %3 components").arg(size[0]).arg(size[1]).arg(components);
}

} // namespace

FieldText fieldText(const SoField& field)
{
    if (!field.isOfType(SoMField::getClassTypeId()))
        return singleText(field);
    const auto& list = static_cast<const SoMField&>(field);
    const int num = list.getNum();
    QString text = listText(list, std::min(num, kMaxShownValues));
    if (text.isEmpty()) // no values at all, or nothing but null nodes
        return num > 0 && isNodeList(field) ? FieldText() : singleText(field);
    // Intended: the lone "," of instance parameters is shortened like a separator.
    text.chop(2);
    if (num > kMaxShownValues)
        text += "...";
    return {text};
}

bool isEditedInPlace(const SoField& field)
{
    if (field.getFieldType() == SoField::EVENT_OUT || isNodeList(field)
        || field.isOfType(SoSFNode::getClassTypeId())
        || field.isOfType(SoSFBufferObject::getClassTypeId()))
        return false;
    return !field.isOfType(SoSFArray::getClassTypeId())
           || !isTooBig(static_cast<const SoSFArray&>(field));
}

bool isWatchable(const SoField& field)
{
    return !isNodeList(field) && !field.isOfType(SoSFNode::getClassTypeId());
}

QString copiedText(const SoField& field)
{
    const FieldText shown = fieldText(field);
    if (!isEditedInPlace(field) || shown.isImage || !field.isOfType(SoMField::getClassTypeId()))
        return shown.text;
    const int num = static_cast<const SoMField&>(field).getNum();
    return isInstanceList(field) || num > kMaxCopiedValues ? shown.text : fullText(field);
}

QString toolTipText(const SoField& field, const QString& shown)
{
    if (field.isOfType(SoSFImage::getClassTypeId()))
        return imageText(static_cast<const SoSFImage&>(field));
    QString text = shown;
    if (text.size() > kMaxToolTipLength)
        text = text.left(kMaxToolTipLength) + "...";
    if (!field.isOfType(SoMField::getClassTypeId()))
        return text;
    const int num = static_cast<const SoMField&>(field).getNum();
    return num > kMaxShownValues ? QString("%1\n%2 values").arg(text).arg(num) : text;
}

} // namespace mirabo
