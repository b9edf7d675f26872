#include "EditorTable.h"

#include "BitMaskWidget.h"
#include "BoolWidget.h"
#include "ColorWidget.h"
#include "EnumWidget.h"
#include "FieldNumbers.h"
#include "ImageWidget.h"
#include "ListWidget.h"
#include "MatrixWidget.h"
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
        {"MFColor", makeListWidget},      {"MFFloat", makeListWidget},
        {"MFInt32", makeListWidget},      {"MFMatrix", makeListWidget},
        {"MFPlane", makeListWidget},      {"MFRotation", makeListWidget},
        {"MFShort", makeListWidget},      {"MFString", makeListWidget},
        {"MFUInt32", makeListWidget},     {"MFUShort", makeListWidget},
        {"MFVec2f", makeListWidget},      {"MFVec2i32", makeListWidget},
        {"MFVec2s", makeListWidget},      {"MFVec3f", makeListWidget},
        {"MFVec4f", makeListWidget},      {"MField", makeListWidget},
        {"SFBitMask", makeBitMaskWidget}, {"SFBool", makeBoolWidget},
        {"SFBox3s", makeNumbersWidget},   {"SFColor", makeColorWidget},
        {"SFEnum", makeEnumWidget},       {"SFFloat", makeNumbersWidget},
        {"SFImage", makeImageWidget},     {"SFInt32", makeNumbersWidget},
        {"SFMatrix", makeMatrixWidget},   {"SFName", makeStringWidget},
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
        return makeColorWidget(edit, form, parent);
    if (isReferenceType(type))
        return makeReferenceWidget(edit, form, parent);
    if (FieldNumbers::of(type))
        return makeNumbersWidget(edit, form, parent);
    return makeTextWidget(edit, form, parent);
}
