#include "mirabo/preferences/SettingKeys.h"

#include <QStringList>

#include <algorithm>
#include <limits>

namespace mirabo {

namespace {

constexpr int kMostLetters = 256;       // of a name: a font family, a node type
constexpr int kMostPathLetters = 32768; // the longest that any system has
constexpr int kMostColor = 255;
constexpr int kMostOutlineWidth = 16; // points; the outline draws no wider ones
constexpr int kMostSamples = 16;      // of a pixel
constexpr int kMostDigits = 17;       // which tell each double from all others
constexpr int kMostVersion = std::numeric_limits<int>::max();
/// The layout of a hundred docks takes some 20,000 characters.
constexpr int kMostLayoutLetters = 1 << 20;
constexpr int kMostBookmarkLetters = 1 << 24; // 500 rows at the greatest depth
constexpr int kMostScenes = 1000;

using Keys = std::vector<SettingKey>;

SettingKey flag(const QString& name, const QVariant& fallback = {})
{
    return {name, SettingKey::Flag, fallback};
}

SettingKey number(const QString& name, const QVariant& fallback, int least, int most)
{
    return {name, SettingKey::Number, fallback, least, most};
}

SettingKey text(const QString& name, const QVariant& fallback, int least, int most)
{
    return {name, SettingKey::Text, fallback, least, most};
}

/// Defaults of styles come from the application's font.
void addStyles(Keys& keys, const QString& group, bool withShow)
{
    keys.push_back(text(group + "*/family", {}, 1, kMostLetters));
    // 0 and below: the font is measured in pixels, and the default's size counts.
    keys.push_back(number(group + "*/size", {}, -1, kMostPointSize));
    for (const char* name : {"*/bold", "*/italic", "*/underline"})
        keys.push_back(flag(group + name));
    for (const char* name : {"*/red", "*/green", "*/blue"})
        keys.push_back(number(group + name, {}, 0, kMostColor));
    if (withShow)
        keys.push_back(flag(group + "*/show"));
}

void addColumns(Keys& keys, const QString& group)
{
    const QString name = group + "ListColumnWidth/";
    for (const char* column : {"0", "1"})
        keys.push_back(number(name + column, 20, -1, kMostPixels));
    for (const char* column : {"2", "3"})
        keys.push_back(number(name + column, 0, -1, kMostPixels));
    keys.push_back(number(name + "*", -1, -1, kMostPixels));
}

void addWindow(Keys& keys, const QString& group)
{
    for (const char* name : {"WindowWidth", "WindowHeight"})
        keys.push_back(number(group + name, kMostPixels, 1, kMostPixels));
    for (const char* name : {"WindowX", "WindowY"})
        keys.push_back(number(group + name, 0, -kMostPixels, kMostPixels));
    keys.push_back(text(group + "MainWindowLayout", QString(), 0, kMostLayoutLetters));
    keys.push_back(text(group + "File*", QString(), 0, kMostPathLetters));
}

/// Place and size when not maximised, by the name of the program that the tool runs in.
void addPrograms(Keys& keys, const QString& group)
{
    for (const char* name : {"*/Width", "*/Height"})
        keys.push_back(number(group + name, kMostPixels, 1, kMostPixels));
    for (const char* name : {"*/X", "*/Y"})
        keys.push_back(number(group + name, 0, -kMostPixels, kMostPixels));
    keys.push_back(flag(group + "*/Maximized", false));
    keys.push_back(text(group + "*/Layout", QString(), 0, kMostLayoutLetters));
}

Keys makeKeys()
{
    const QString tree = "TreeViewPreferences/";
    const QString overview = "NodeOverviewPreferences/";
    const QString watch = "FieldWatchPreferences/";
    Keys keys;
    addStyles(keys, tree, true);
    keys.push_back(flag(tree + "HighlightSelectedNode", true));
    keys.push_back(flag(tree + "RealNodekitsCounter", false));
    keys.push_back(flag(tree + "RealVRMLCounter", false));
    addStyles(keys, overview, false);
    keys.push_back(flag(overview + "ShowCatalogPart", false));
    addColumns(keys, overview);
    addStyles(keys, watch, false);
    keys.push_back(number(watch + "FieldWatchHeight", 0, 0, kMostPanelPixels));
    addColumns(keys, watch);
    addWindow(keys, "MiraboViewer/MiraboMainFrame/");
    addPrograms(keys, "MiraboViewer/Programs/");
    keys.push_back(number("MiraboViewer/Navigation/Scheme", 0, 0, 1));
    keys.push_back(number("MiraboViewer/Navigation/Turning", 0, 0, 2));
    keys.push_back(flag("MiraboViewer/Navigation/Spin", true));
    keys.push_back(number("MiraboViewer/Samples", 4, 1, kMostSamples));
    keys.push_back(text("AddDialog/LastType", QString(), 0, kMostLetters));
    keys.push_back({"Bookmarks/Scenes", SettingKey::Texts, QStringList(), 0, kMostScenes});
    keys.push_back(text("Bookmarks/*", QString(), 0, kMostBookmarkLetters));
    keys.push_back(text("General/Documentation", QString(), 0, kMostPathLetters));
    keys.push_back(text("Outline/Color", QString(), 0, kMostLetters));
    keys.push_back(number("Outline/Width", 2, 1, kMostOutlineWidth));
    keys.push_back(flag("Start/RestoreWindow", true));
    keys.push_back(flag("Start/RestoreBookmarks", true));
    keys.push_back(flag("Start/RestoreFile", false));
    keys.push_back(text("Shortcuts/*", {}, 1, kMostLetters));
    keys.push_back(number("FieldEditor/Digits", 0, 0, kMostDigits));
    keys.push_back(flag("FieldEditor/AnglesInDegrees", true));
    keys.push_back(number("Store/Version", 0, 0, kMostVersion));
    return keys;
}

/// As QSettings has its keys.
QString normalized(const QString& key)
{
    return key.split('/', Qt::SkipEmptyParts).join('/');
}

bool matches(const QString& pattern, const QString& key)
{
    const int star = pattern.indexOf('*');
    if (star < 0)
        return pattern == key;
    return key.size() >= pattern.size() && key.startsWith(QStringView(pattern).left(star))
           && key.endsWith(QStringView(pattern).mid(star + 1));
}

QVariant checkedFlag(const QVariant& value)
{
    const QString text = value.toString().trimmed().toLower();
    if (text == "true" || text == "1")
        return true;
    return text == "false" || text == "0" ? QVariant(false) : QVariant();
}

/// Whole numbers of any length.
QVariant checkedNumber(const QVariant& value, int least, int most)
{
    const QString text = value.toString().trimmed();
    const bool isSigned = text.startsWith('-') || text.startsWith('+');
    const auto begin = text.begin() + (isSigned ? 1 : 0);
    const auto isDigit = [](QChar c) { return c >= '0' && c <= '9'; };
    if (begin == text.end() || !std::all_of(begin, text.end(), isDigit))
        return {};
    bool fits = false;
    const qlonglong number = text.toLongLong(&fits);
    if (!fits)
        return text.startsWith('-') ? least : most;
    return static_cast<int>(std::clamp<qlonglong>(number, least, most));
}

QVariant checkedText(const QVariant& value, int least, int most)
{
    if (value.type() != QVariant::String && value.type() != QVariant::ByteArray)
        return {};
    const QString text = value.toString();
    return text.size() >= least && text.size() <= most ? text : QVariant();
}

/// One text is stored as such.
QVariant checkedTexts(const QVariant& value, int most)
{
    if (value.type() != QVariant::String && value.type() != QVariant::StringList)
        return {};
    QStringList texts;
    for (const QString& text : value.toStringList())
        if (texts.size() < most && text.size() <= kMostPathLetters)
            texts << text;
    return texts;
}

} // namespace

const std::vector<SettingKey>& settingKeys()
{
    static const Keys keys = makeKeys();
    return keys;
}

const SettingKey* findSettingKey(const QString& key)
{
    const Keys& keys = settingKeys();
    const auto at =
        std::find_if(keys.begin(), keys.end(), [name = normalized(key)](const SettingKey& each) {
            return matches(each.name, name);
        });
    return at == keys.end() ? nullptr : &*at;
}

QVariant checkedSetting(const SettingKey& key, const QVariant& value)
{
    if (!value.isValid())
        return {};
    switch (key.kind) {
    case SettingKey::Flag:
        return checkedFlag(value);
    case SettingKey::Number:
        return checkedNumber(value, key.least, key.most);
    case SettingKey::Text:
        return checkedText(value, key.least, key.most);
    case SettingKey::Texts:
        return checkedTexts(value, key.most);
    }
    return {};
}

} // namespace mirabo
