#pragma once

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoType.h>
#include <kalmyr/fields/SoMFEnum.h>
#include <kalmyr/fields/SoSFBitMask.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoSeparator.h>

#include <algorithm>
#include <string>
#include <vector>

/// Texts of values of a type without "SF" and "MF": usual and extreme ones. The first is another
/// one than the type's default.
inline const std::vector<std::string>& samplesOf(const std::string& kind)
{
    static const std::vector<std::pair<std::string, std::vector<std::string>>> samples{
        {"Bool", {"TRUE", "FALSE"}},
        {"Float", {"0.1", "-0", "nan", "inf", "-inf", "3.4028235e+38", "1e-45", "12"}},
        {"Double", {"0.1", "-0", "nan", "1.7976931348623157e+308", "5e-324"}},
        {"Time", {"1.5", "1700000000.25"}},
        {"Int32", {"7", "-2147483648", "2147483647"}},
        {"UInt32", {"7", "4294967295"}},
        {"Short", {"-7", "-32768", "32767"}},
        {"UShort", {"7", "65535"}},
        {"String", {"\"a b\"", "\"\"", "\"line\nline \\\"quoted\\\" \xc3\xa9\""}},
        {"Name", {"wheel", "\"\""}},
        {"Vec2f", {"0.1 -2", "nan inf"}},
        {"Vec3f", {"1 2 3", "0.1 -0 1e30"}},
        {"Vec4f", {"1 2 3 4", "0 0 0 0"}},
        {"Vec2d", {"0.1 -2"}},
        {"Vec3d", {"1 2 3"}},
        {"Vec4d", {"1 2 3 4"}},
        {"Vec2s", {"-32768 32767"}},
        {"Vec3s", {"1 2 3"}},
        {"Vec4s", {"1 2 3 4"}},
        {"Vec2i32", {"-2147483648 2147483647"}},
        {"Vec3i32", {"1 2 3"}},
        {"Vec4i32", {"1 2 3 4"}},
        {"Color", {"0.8 0.3 0.1", "2 -1 0"}},
        {"ColorRGBA", {"0.8 0.3 0.1 0.5"}},
        {"Rotation", {"0 1 0 0.5", "0.6 0.8 0 3"}},
        {"Matrix", {"1 0 0 0 0 0 1 0 0 -1 0 0 5 6 7 1", "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0"}},
        {"Plane", {"1 0 0 5", "0 0.6 0.8 -1"}},
        {"Box2f", {"0 0 1 2"}},
        {"Box2s", {"0 0 1 2"}},
        {"Box3f", {"0 0 0 1 2 3"}},
        {"Box3s", {"0 0 0 1 2 3"}},
        {"Image", {"2 1 3 0xff0000 0x00ff00", "0 0 0", "1 2 4 0x01020304 0xffffffff"}},
    };
    static const std::vector<std::string> none;
    const auto at = std::find_if(samples.begin(), samples.end(),
                                 [&kind](const auto& entry) { return entry.first == kind; });
    return at == samples.end() ? none : at->second;
}

/// A node with a field of each type that has samples, called "one" and "many" with the type behind.
inline SoRef<SoNode> makeProbe()
{
    std::string fields;
    for (const SoType type : SoType::getAllDerivedFrom(SoField::getClassTypeId())) {
        const std::string name = type.getName().getString();
        if (!type.canCreateInstance() || samplesOf(name.substr(2)).empty())
            continue;
        fields += (fields.empty() ? "" : ", ") + name + (name[0] == 'S' ? " one" : " many") + name;
    }
    const std::string text = "#Kalmyr V1.0 ascii\nProbe { fields [ " + fields + " ] }\n";
    SoInput in;
    in.setBuffer(text.data(), text.size());
    SoNode* node = nullptr;
    SoDB::read(&in, node);
    return SoRef<SoNode>(node);
}
