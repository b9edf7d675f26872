#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbImage.h>
#include <kalmyr/fields/SoMFValue.h>
#include <kalmyr/fields/SoSFValue.h>

/// \file
/// The fields whose value is a plain value: class, value type. The single-value classes are
/// SoSFValue, the multiple-value classes SoMFValue; type names are those of the classes without
/// "So". Text forms are those of SoValueText.h.

#define KALMYR_SINGLE_FIELD(Class, T)                                                              \
    class KALMYR_API Class final : public SoSFValue<Class, T> {                                    \
        SO_FIELD_HEADER(Class)                                                                     \
        SO_FIELD_ASSIGNMENT(Class, SoSFValue)                                                      \
    };
#define KALMYR_VALUE_FIELD(Suffix, T)                                                              \
    KALMYR_SINGLE_FIELD(SoSF##Suffix, T)                                                           \
    class KALMYR_API SoMF##Suffix final : public SoMFValue<SoMF##Suffix, T> {                      \
        SO_FIELD_HEADER(SoMF##Suffix)                                                              \
        SO_FIELD_ASSIGNMENT(SoMF##Suffix, SoMFValue)                                               \
    };

KALMYR_VALUE_FIELD(Bool, bool)
KALMYR_VALUE_FIELD(Int32, std::int32_t)
KALMYR_VALUE_FIELD(UInt32, std::uint32_t)
KALMYR_VALUE_FIELD(Short, std::int16_t)
KALMYR_VALUE_FIELD(UShort, std::uint16_t)
KALMYR_VALUE_FIELD(Float, float)
KALMYR_VALUE_FIELD(Double, double)
KALMYR_VALUE_FIELD(Time, SbTime)
KALMYR_VALUE_FIELD(String, SbString)
KALMYR_VALUE_FIELD(Name, SbName)
KALMYR_VALUE_FIELD(Vec2f, SbVec2f)
KALMYR_VALUE_FIELD(Vec3f, SbVec3f)
KALMYR_VALUE_FIELD(Vec4f, SbVec4f)
KALMYR_VALUE_FIELD(Vec2d, SbVec2d)
KALMYR_VALUE_FIELD(Vec3d, SbVec3d)
KALMYR_VALUE_FIELD(Vec4d, SbVec4d)
KALMYR_VALUE_FIELD(Vec2s, SbVec2s)
KALMYR_VALUE_FIELD(Vec3s, SbVec3s)
KALMYR_VALUE_FIELD(Vec4s, SbVec4s)
KALMYR_VALUE_FIELD(Vec2i32, SbVec2i32)
KALMYR_VALUE_FIELD(Vec3i32, SbVec3i32)
KALMYR_VALUE_FIELD(Vec4i32, SbVec4i32)
KALMYR_VALUE_FIELD(Color, SbColor)
KALMYR_VALUE_FIELD(ColorRGBA, SbColorRGBA)
KALMYR_VALUE_FIELD(Rotation, SbRotation)
KALMYR_VALUE_FIELD(Matrix, SbMatrix)
KALMYR_VALUE_FIELD(Plane, SbPlane)
KALMYR_SINGLE_FIELD(SoSFBox2f, SbBox2f)
KALMYR_SINGLE_FIELD(SoSFBox2s, SbBox2s)
KALMYR_SINGLE_FIELD(SoSFBox3f, SbBox3f)
KALMYR_SINGLE_FIELD(SoSFBox3s, SbBox3s)

#undef KALMYR_VALUE_FIELD
#undef KALMYR_SINGLE_FIELD

/// A picture; writing text of one shares no pixels with the field.
class KALMYR_API SoSFImage final : public SoSFValue<SoSFImage, SbImage> {
    SO_FIELD_HEADER(SoSFImage)
    SO_FIELD_ASSIGNMENT(SoSFImage, SoSFValue)
    using SoSFValue::setValue;

    /// The pixels, or null for the null image; size and components as out parameters.
    const unsigned char* getValue(SbVec2i32& size, int& components) const
    {
        return SoSFValue::getValue().getValue(size, components);
    }
    const SbImage& getValue() const { return SoSFValue::getValue(); }
    /// Copies the pixels; without `bytes` they become 0. False, with the field unchanged and an
    /// error posted, for sizes and numbers of components that SbImage::setValue() refuses.
    bool setValue(const SbVec2i32& size, int components, const unsigned char* bytes);
    /// Direct access to the pixels; one notification, sent by finishEditing().
    unsigned char* startEditing(SbVec2i32& size, int& components);
    void finishEditing() { valueChanged(); }
};
