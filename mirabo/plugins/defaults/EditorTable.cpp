#include "EditorTable.h"

#include "BitMaskWidget.h"
#include "BoolWidget.h"
#include "EnumWidget.h"
#include "FieldNumbers.h"
#include "NumbersWidget.h"
#include "ReferenceWidget.h"
#include "RotationWidget.h"
#include "StringWidget.h"
#include "TextWidget.h"

#include <kalmyr/core/SoType.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoSFPath.h>
#include <kalmyr/fields/SoValueFields.h>

#include <algorithm>

const std::vector<EditorEntry>& editorTable()
{
    static const std::vector<EditorEntry> entries{
        {"MFColor", makeTextWidget},      {"MFFloat", makeTextWidget},
        {"MFInt32", makeTextWidget},      {"MFMatrix", makeTextWidget},
        {"MFPlane", makeTextWidget},      {"MFRotation", makeTextWidget},
        {"MFShort", makeTextWidget},      {"MFString", makeTextWidget},
        {"MFUInt32", makeTextWidget},     {"MFUShort", makeTextWidget},
        {"MFVec2f", makeTextWidget},      {"MFVec2i32", makeTextWidget},
        {"MFVec2s", makeTextWidget},      {"MFVec3f", makeTextWidget},
        {"MFVec4f", makeTextWidget},      {"MField", makeTextWidget},
        {"SFBitMask", makeBitMaskWidget}, {"SFBool", makeBoolWidget},
        {"SFBox3s", makeNumbersWidget},   {"SFColor", makeTextWidget},
        {"SFEnum", makeEnumWidget},       {"SFFloat", makeNumbersWidget},
        {"SFImage", makeTextWidget},      {"SFInt32", makeNumbersWidget},
        {"SFMatrix", makeTextWidget},     {"SFName", makeStringWidget},
        {"SFPlane", makeNumbersWidget},   {"SFRotation", makeRotationWidget},
        {"SFShort", makeNumbersWidget},   {"SFString", makeStringWidget},
        {"SFUInt32", makeNumbersWidget},  {"SFUShort", makeNumbersWidget},
        {"SFVec2f", makeNumbersWidget},   {"SFVec2i32", makeNumbersWidget},
        {"SFVec2s", makeNumbersWidget},   {"SFVec3f", makeNumbersWidget},
        {"SFVec4f", makeNumbersWidget},   {"SField", makeWidgetByType},
    };
    return entries;
}

MrbFieldWidget* makeWidgetByType(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent)
{
    const SoType type = edit->getFieldType();
    if (type == SoSFColorRGBA::getClassTypeId())
        return makeTextWidget(edit, form, parent);
    if (isReferenceType(type))
        return makeReferenceWidget(edit, form, parent);
    if (FieldNumbers::of(type))
        return makeNumbersWidget(edit, form, parent);
    return makeTextWidget(edit, form, parent);
}
