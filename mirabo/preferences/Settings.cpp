#include "mirabo/preferences/Settings.h"

#include "mirabo/preferences/SettingKeys.h"
#include "mirabo/preferences/SettingsStore.h"

#include <QGuiApplication>
#include <QSettings>
#include <QUrl>

#include <algorithm>
#include <memory>
#include <utility>

namespace mirabo {

namespace {

constexpr char kDocumentationKey[] = "/General/Documentation";
constexpr char kDocumentationServer[] = "https://docs.mirabo.dev";
constexpr char kOutlineColorKey[] = "/Outline/Color";
constexpr char kOutlineColor[] = "#00e6ff"; // as the toolkit draws it by itself
constexpr char kOutlineWidthKey[] = "/Outline/Width";
constexpr char kRestoreWindowKey[] = "/Start/RestoreWindow";
constexpr char kRestoreBookmarksKey[] = "/Start/RestoreBookmarks";
constexpr char kRestoreFileKey[] = "/Start/RestoreFile";

struct State {
    std::unique_ptr<SettingsStore> store;
    SettingsStore::Listener listener;
    QString untold;  ///< for the next listener
    int changes = 0; ///< that are open
};

State& state()
{
    static State s;
    return s;
}

void tellUser(const QString& message)
{
    if (state().listener)
        state().listener(message);
    else
        state().untold = message;
}

SettingsStore& store()
{
    if (!state().store)
        state().store = std::make_unique<SettingsStore>(&tellUser);
    return *state().store;
}

/// The stored value, checked; invalid: none of use.
QVariant storedValue(const QString& key, SettingKey::Kind kind)
{
    const SettingKey* declared = findSettingKey(key);
    return declared && declared->kind == kind ? checkedSetting(*declared, settings().value(key))
                                              : QVariant();
}

QVariant valueOf(const QString& key, SettingKey::Kind kind, const QVariant& fallback, bool* present)
{
    if (present)
        *present = settings().contains(key);
    const QVariant value = storedValue(key, kind);
    return value.isValid() ? value : fallback;
}

/// The declared default where nothing of use is stored.
QVariant valueOf(const QString& key, SettingKey::Kind kind)
{
    const SettingKey* declared = findSettingKey(key);
    return valueOf(key, kind, declared ? declared->fallback : QVariant(), nullptr);
}

QString columnWidthKey(const QString& group, int column)
{
    return group + "/ListColumnWidth/" + QString::number(column);
}

QString treeKey(const char* name)
{
    return QString(kTreeGroup) + name;
}

TextStyle plainStyle(const QColor& color)
{
    const QFont base = QGuiApplication::font();
    TextStyle style;
    style.font = QFont(base.family(), base.pointSize(), base.weight());
    style.color = color;
    return style;
}

bool hasShowKey(const QString& group)
{
    return group == QLatin1String(kTreeGroup);
}

void readStyle(const QString& key, bool withShow, TextStyle& style)
{
    QFont font(readText(key + "/family", style.font.family()));
    const int size = readInt(key + "/size", style.font.pointSize());
    if (size > 0)
        font.setPointSize(std::max(size, kLeastPointSize));
    else if (style.font.pointSize() > 0)
        font.setPointSize(style.font.pointSize());
    else // a font given in pixels has no size in points
        font.setPixelSize(style.font.pixelSize());
    font.setWeight(readBool(key + "/bold", style.font.bold()) ? QFont::Bold : QFont::Normal);
    font.setItalic(readBool(key + "/italic", style.font.italic()));
    font.setUnderline(readBool(key + "/underline", style.font.underline()));
    const int red = readInt(key + "/red", style.color.red());
    const int green = readInt(key + "/green", style.color.green());
    const int blue = readInt(key + "/blue", style.color.blue());
    style.font = font;
    style.color = QColor(red, green, blue);
    if (withShow)
        style.show = readBool(key + "/show", style.show);
}

void writeStyle(const QString& key, bool withShow, const TextStyle& style)
{
    writeSetting(key + "/family", style.font.family());
    writeSetting(key + "/size", style.font.pointSize());
    writeSetting(key + "/bold", style.font.bold());
    writeSetting(key + "/italic", style.font.italic());
    writeSetting(key + "/underline", style.font.underline());
    writeSetting(key + "/red", style.color.red());
    writeSetting(key + "/green", style.color.green());
    writeSetting(key + "/blue", style.color.blue());
    if (withShow)
        writeSetting(key + "/show", style.show);
}

} // namespace

const TextStyle& StyleTable::operator[](const QString& element) const
{
    static const TextStyle none;
    const auto at = std::find_if(m_entries.begin(), m_entries.end(),
                                 [&](const Entry& entry) { return entry.first == element; });
    return at == m_entries.end() ? none : at->second;
}

void StyleTable::set(const QString& element, const TextStyle& style)
{
    for (Entry& entry : m_entries)
        if (entry.first == element) {
            entry.second = style;
            return;
        }
    m_entries.emplace_back(element, style);
}

QSettings& settings()
{
    return store().settings();
}

void releaseSettings()
{
    if (!state().store)
        return;
    syncSettings();
    state().store.reset();
    state().untold.clear(); // nobody is left whom it concerns
}

void syncSettings()
{
    store().sync();
}

void setSettingsListener(const std::function<void(const QString& message)>& listener)
{
    state().listener = listener;
    if (listener && !state().untold.isEmpty())
        listener(std::exchange(state().untold, {}));
}

SettingsChange::SettingsChange()
{
    ++state().changes;
}

SettingsChange::~SettingsChange()
{
    if (--state().changes == 0)
        syncSettings();
}

void writeSetting(const QString& key, const QVariant& value)
{
    store().set(key, value);
}

void removeSetting(const QString& key)
{
    store().remove(key);
}

bool isSettingStored(const QString& key)
{
    const SettingKey* declared = findSettingKey(key);
    return declared && storedValue(key, declared->kind).isValid();
}

int readInt(const QString& key, int fallback, bool* present)
{
    return valueOf(key, SettingKey::Number, fallback, present).toInt();
}

QString readText(const QString& key, const QString& fallback, bool* present)
{
    return valueOf(key, SettingKey::Text, fallback, present).toString();
}

bool readBool(const QString& key, bool fallback)
{
    return valueOf(key, SettingKey::Flag, fallback, nullptr).toBool();
}

int readInt(const QString& key)
{
    return valueOf(key, SettingKey::Number).toInt();
}

QString readText(const QString& key)
{
    return valueOf(key, SettingKey::Text).toString();
}

QStringList readTexts(const QString& key)
{
    return valueOf(key, SettingKey::Texts).toStringList();
}

bool readBool(const QString& key)
{
    return valueOf(key, SettingKey::Flag).toBool();
}

StyleTable defaultFieldStyles()
{
    return StyleTable(
        {{"Default Value", plainStyle(Qt::black)}, {"Changed Value", plainStyle(Qt::red)}});
}

StyleTable defaultTreeStyles()
{
    TextStyle name = plainStyle(Qt::darkGreen);
    name.font.setItalic(true);
    TextStyle fromField = plainStyle(Qt::black);
    fromField.font.setFamily("Times New Roman");
    return StyleTable({{"Node Type", plainStyle(Qt::black)},
                       {"Node/Part Name", name},
                       {"Reference Count", plainStyle(Qt::blue)},
                       {"Node From Field", fromField}});
}

void readStyles(const QString& group, StyleTable& table)
{
    for (auto& [element, style] : table.entries())
        readStyle(group + element, hasShowKey(group), style);
}

void writeStyles(const QString& group, const StyleTable& table)
{
    const SettingsChange change;
    for (const auto& [element, style] : table.entries())
        writeStyle(group + element, hasShowKey(group), style);
}

bool haveSameSettings(const StyleTable& a, const StyleTable& b)
{
    const auto same = [](const StyleTable::Entry& x, const StyleTable::Entry& y) {
        const TextStyle& p = x.second;
        const TextStyle& q = y.second;
        return x.first == y.first && p.font.family() == q.font.family()
               && p.font.pointSize() == q.font.pointSize() && p.font.bold() == q.font.bold()
               && p.font.italic() == q.font.italic() && p.font.underline() == q.font.underline()
               && p.color == q.color && p.show == q.show;
    };
    return std::equal(a.entries().begin(), a.entries().end(), b.entries().begin(),
                      b.entries().end(), same);
}

bool areStylesStored(const QString& group, const StyleTable& table)
{
    const auto& entries = table.entries();
    return std::all_of(entries.begin(), entries.end(), [&](const StyleTable::Entry& entry) {
        return isSettingStored(group + entry.first + "/family");
    });
}

bool readHighlightSelectedNode()
{
    return readBool(treeKey("HighlightSelectedNode"));
}

void writeHighlightSelectedNode(bool on)
{
    writeSetting(treeKey("HighlightSelectedNode"), on);
}

bool readRealNodekitsCounter()
{
    return readBool(treeKey("RealNodekitsCounter"));
}

void writeRealNodekitsCounter(bool on)
{
    writeSetting(treeKey("RealNodekitsCounter"), on);
}

bool readRealVrmlCounter()
{
    return readBool(treeKey("RealVRMLCounter"));
}

void writeRealVrmlCounter(bool on)
{
    writeSetting(treeKey("RealVRMLCounter"), on);
}

bool readShowCatalogPart()
{
    return readBool(QString(kNodeOverviewGroup) + "ShowCatalogPart");
}

void writeShowCatalogPart(bool on)
{
    writeSetting(QString(kNodeOverviewGroup) + "ShowCatalogPart", on);
}

QString readDocumentationAddress()
{
    QString address = readText(kDocumentationKey).trimmed();
    while (address.endsWith('/'))
        address.chop(1);
    const QUrl url(address, QUrl::StrictMode);
    const bool isAddress = url.isValid() && !url.isRelative();
    return isAddress ? address : QString(kDocumentationServer);
}

void writeDocumentationAddress(const QString& address)
{
    writeSetting(kDocumentationKey, address);
}

QColor readOutlineColor()
{
    const QColor color(readText(kOutlineColorKey));
    return color.isValid() ? color : QColor(kOutlineColor);
}

void writeOutlineColor(const QColor& color)
{
    writeSetting(kOutlineColorKey, color.name());
}

int readOutlineWidth()
{
    return readInt(kOutlineWidthKey);
}

void writeOutlineWidth(int width)
{
    writeSetting(kOutlineWidthKey, width);
}

bool readRestoreWindow()
{
    return readBool(kRestoreWindowKey);
}

void writeRestoreWindow(bool on)
{
    writeSetting(kRestoreWindowKey, on);
}

bool readRestoreBookmarks()
{
    return readBool(kRestoreBookmarksKey);
}

void writeRestoreBookmarks(bool on)
{
    writeSetting(kRestoreBookmarksKey, on);
}

bool readRestoreFile()
{
    return readBool(kRestoreFileKey);
}

void writeRestoreFile(bool on)
{
    writeSetting(kRestoreFileKey, on);
}

int readFieldWatchHeight()
{
    return readInt(QString(kFieldWatchGroup) + "FieldWatchHeight");
}

void writeFieldWatchHeight(int height)
{
    writeSetting(QString(kFieldWatchGroup) + "FieldWatchHeight", height);
}

bool hasListColumnWidth(const QString& group, int column)
{
    return isSettingStored(columnWidthKey(group, column));
}

int readListColumnWidth(const QString& group, int column)
{
    return readInt(columnWidthKey(group, column));
}

void writeListColumnWidth(const QString& group, int column, int width)
{
    writeSetting(columnWidthKey(group, column), width);
}

} // namespace mirabo
