#include <kalmyr/fields/SoValueFields.h>

#include <kalmyr/base/SoContract.h>

#define KALMYR_SINGLE_SOURCE(Suffix) SO_FIELD_SOURCE(SoSF##Suffix, SoSField, "SF" #Suffix)
#define KALMYR_VALUE_SOURCE(Suffix)                                                                \
    KALMYR_SINGLE_SOURCE(Suffix)                                                                   \
    SO_FIELD_SOURCE(SoMF##Suffix, SoMField, "MF" #Suffix)

KALMYR_VALUE_SOURCE(Bool)
KALMYR_VALUE_SOURCE(Int32)
KALMYR_VALUE_SOURCE(UInt32)
KALMYR_VALUE_SOURCE(Short)
KALMYR_VALUE_SOURCE(UShort)
KALMYR_VALUE_SOURCE(Float)
KALMYR_VALUE_SOURCE(Double)
KALMYR_VALUE_SOURCE(Time)
KALMYR_VALUE_SOURCE(String)
KALMYR_VALUE_SOURCE(Name)
KALMYR_VALUE_SOURCE(Vec2f)
KALMYR_VALUE_SOURCE(Vec3f)
KALMYR_VALUE_SOURCE(Vec4f)
KALMYR_VALUE_SOURCE(Vec2d)
KALMYR_VALUE_SOURCE(Vec3d)
KALMYR_VALUE_SOURCE(Vec4d)
KALMYR_VALUE_SOURCE(Vec2s)
KALMYR_VALUE_SOURCE(Vec3s)
KALMYR_VALUE_SOURCE(Vec4s)
KALMYR_VALUE_SOURCE(Vec2i32)
KALMYR_VALUE_SOURCE(Vec3i32)
KALMYR_VALUE_SOURCE(Vec4i32)
KALMYR_VALUE_SOURCE(Color)
KALMYR_VALUE_SOURCE(ColorRGBA)
KALMYR_VALUE_SOURCE(Rotation)
KALMYR_VALUE_SOURCE(Matrix)
KALMYR_VALUE_SOURCE(Plane)
KALMYR_SINGLE_SOURCE(Box2f)
KALMYR_SINGLE_SOURCE(Box2s)
KALMYR_SINGLE_SOURCE(Box3f)
KALMYR_SINGLE_SOURCE(Box3s)
KALMYR_SINGLE_SOURCE(Image)

bool SoSFImage::setValue(const SbVec2i32& size, int components, const unsigned char* bytes)
{
    SbImage image;
    if (!kalmyr::holds(image.setValue(size, components, bytes),
                       "a size from 0 on, 1 to 4 components, at most SbImage::kMaxBytes"))
        return false;
    setValue(image);
    return true;
}

unsigned char* SoSFImage::startEditing(SbVec2i32& size, int& components)
{
    evaluate();
    size = m_value.getSize();
    components = m_value.getComponents();
    return m_value.isNull() ? nullptr : m_value.edit();
}
