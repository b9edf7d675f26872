#include "mirabo/overview/FieldText.h"

#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoMFInstanceParameter.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoMFUniformShaderParameter.h>
#include <kalmyr/fields/SoSFArray.h>
#include <kalmyr/fields/SoSFBufferObject.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>

#include <algorithm>
#include <cstdint>

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

QString fullText(const SoField& field)
{
    SbString text;
    field.get(text);
    return toQString(text);
}

QString nodeNames(const SoMFNode& field, int count)
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
    SbString value;
    for (int i = 0; i < count; ++i) {
        field.get1(i, value);
        text += toQString(value) + ", ";
    }
    return text;
}

/// The first values of a multiple-value field, each followed by a separator.
QString listText(const SoMField& field, int count, bool& editable)
{
    if (field.isOfType(SoMFInstanceParameter::getClassTypeId()))
        return ",";
    if (!field.isOfType(SoMFNode::getClassTypeId())
        && !field.isOfType(SoMFUniformShaderParameter::getClassTypeId()))
        return valueTexts(field, count);
    editable = false;
    return nodeNames(static_cast<const SoMFNode&>(field), count);
}

FieldText arrayText(const SoSFArray& field)
{
    const SbVec3i32 d = field.getDimensions();
    const auto elements = static_cast<std::int64_t>(d[0]) * d[1] * d[2];
    if (elements > kMaxShownArrayElements)
        return {"ARRAY TOO BIG", false, false};
    return {fullText(field), true, false};
}

FieldText singleText(const SoField& field)
{
    if (field.isOfType(SoSFNode::getClassTypeId())) {
        const SoNode* node = static_cast<const SoSFNode&>(field).getValue();
        return {node ? typeName(node) : QString(), false, false};
    }
    if (field.isOfType(SoSFArray::getClassTypeId()))
        return arrayText(static_cast<const SoSFArray&>(field));
    if (field.isOfType(SoSFBufferObject::getClassTypeId())) {
        const bool held = static_cast<const SoSFBufferObject&>(field).getValue() != nullptr;
        return {held ? QString("SoBufferObject") : QString(), false, false};
    }
    if (field.isOfType(SoSFImage::getClassTypeId()))
        return {QString(), true, true};
    return {fullText(field), true, false};
}

} // namespace

FieldText fieldText(const SoField& field)
{
    FieldText result;
    if (field.isOfType(SoMField::getClassTypeId())) {
        const auto& list = static_cast<const SoMField&>(field);
        const int num = list.getNum();
        result.text = listText(list, std::min(num, kMaxShownValues), result.editable);
        if (!result.text.isEmpty()) {
            // Intended: the lone "," of instance parameters is shortened like a separator.
            result.text.chop(2);
            if (num > kMaxShownValues)
                result.text += "...";
        } else if (result.editable) {
            result = singleText(field);
        }
    } else {
        result = singleText(field);
    }
    if (field.getFieldType() == SoField::EVENT_OUT)
        result.editable = false;
    return result;
}

} // namespace mirabo
