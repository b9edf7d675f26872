#include "mirabo/launch/Configuration.h"

#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/io/SoInput.h>

#include <array>

namespace mirabo {

namespace {

/// Field types with an editor in the default plug-in ("MField" and "SField" are the editors of
/// every other multiple and single field).
constexpr std::array kEditors{
    "MFColor",    "MField",   "MFFloat",   "MFInt32",  "MFMatrix", "MFPlane",   "MFRotation",
    "MFShort",    "MFString", "MFUInt32",  "MFUShort", "MFVec2f",  "MFVec2i32", "MFVec2s",
    "MFVec3f",    "MFVec4f",  "SFBitMask", "SFBool",   "SFBox3s",  "SFColor",   "SFEnum",
    "SFFloat",    "SFImage",  "SFInt32",   "SField",   "SFMatrix", "SFName",    "SFPlane",
    "SFRotation", "SFShort",  "SFString",  "SFUInt32", "SFUShort", "SFVec2f",   "SFVec2i32",
    "SFVec2s",    "SFVec3f",  "SFVec4f"};

} // namespace

QString builtInConfiguration()
{
    QString text = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                   "<configuration >\n"
                   "<plugins>\n"
                   "<loadPlugin file=\"MrbDefaults\"/>\n"
                   "</plugins>\n"
                   "<profiles default=\"Defaults\">\n"
                   "<profile name=\"Defaults\">\n"
                   "<activeExtension plugin=\"MrbDefaults\" extension=\"Field Editor\">\n";
    for (const char* editor : kEditors)
        text +=
            QString("<controlledExtension plugin=\"MrbDefaults\" extension=\"%1\"/>\n").arg(editor);
    return text + "</activeExtension>\n</profile>\n</profiles>\n</configuration>\n";
}

void registerBuiltInConfiguration()
{
    SoInput::addInMemoryTextFile(kBuiltInConfigurationName,
                                 builtInConfiguration().toUtf8().constData());
}

Configuration findConfiguration()
{
    const SbString preferred = SoPreferences::getString(
        "KMR_MIRABO_CONFIGURATION_FILE", "$KMRHOME/data/Mirabo/MrbConfiguration.xml");
    for (const SbString& name : {preferred, SbString("./MrbConfiguration.xml")}) {
        const SbString path = SbFileHelper::expandString(name);
        if (SbFileHelper::isAccessible(path, SbFileHelper::READABLE))
            return {QString::fromUtf8(path.getString()), true};
    }
    SbString text;
    SoInput::readTextFile(kBuiltInConfigurationName, text);
    return {QString::fromUtf8(text.getString()), false};
}

} // namespace mirabo
