#include <kalmyr/fields/SoFieldsInit.h>

#include <kalmyr/fields/SoBufferObject.h>
#include <kalmyr/fields/SoMFInstanceParameter.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoMFUniformShaderParameter.h>
#include <kalmyr/fields/SoSFArray.h>
#include <kalmyr/fields/SoSFBufferObject.h>
#include <kalmyr/fields/SoSFEngine.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoSFFieldContainer.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoSFPath.h>
#include <kalmyr/fields/SoSFTrigger.h>
#include <kalmyr/fields/SoValueFields.h>

#include "Converters.h"

namespace {

template <class... Fields>
void initClasses()
{
    (Fields::initClass(), ...);
}

void initScalars()
{
    initClasses<SoSFBool, SoMFBool, SoSFInt32, SoMFInt32, SoSFUInt32, SoMFUInt32, SoSFShort,
                SoMFShort, SoSFUShort, SoMFUShort, SoSFFloat, SoMFFloat, SoSFDouble, SoMFDouble,
                SoSFTime, SoMFTime, SoSFString, SoMFString, SoSFName, SoMFName>();
}

void initVectors()
{
    initClasses<SoSFVec2f, SoMFVec2f, SoSFVec3f, SoMFVec3f, SoSFVec4f, SoMFVec4f, SoSFVec2d,
                SoMFVec2d, SoSFVec3d, SoMFVec3d, SoSFVec4d, SoMFVec4d, SoSFVec2s, SoMFVec2s,
                SoSFVec3s, SoMFVec3s, SoSFVec4s, SoMFVec4s, SoSFVec2i32, SoMFVec2i32, SoSFVec3i32,
                SoMFVec3i32, SoSFVec4i32, SoMFVec4i32>();
}

void initCompounds()
{
    initClasses<SoSFColor, SoMFColor, SoSFColorRGBA, SoMFColorRGBA, SoSFRotation, SoMFRotation,
                SoSFMatrix, SoMFMatrix, SoSFPlane, SoMFPlane, SoSFBox2f, SoSFBox2s, SoSFBox3f,
                SoSFBox3s, SoSFImage, SoSFEnum, SoMFEnum, SoSFBitMask, SoSFArray, SoSFTrigger>();
}

void initHolders()
{
    initClasses<SoBufferObject, SoSFBufferObject, SoSFNode, SoMNodeField, SoMFNode,
                SoMFUniformShaderParameter, SoMFInstanceParameter, SoSFPath, SoMFPath,
                SoSFFieldContainer, SoSFEngine, SoMFEngine>();
}

} // namespace

void kalmyr::initFields()
{
    initScalars();
    initVectors();
    initCompounds();
    initHolders();
    kalmyr::detail::initConverters();
}
