#include "mirabo/preferences/Settings.h"

#include <QGuiApplication>
#include <QSettings>

#include <algorithm>
#include <memory>

namespace mirabo {

namespace {

std::unique_ptr<QSettings>& store()
{
    static std::unique_ptr<QSettings> s;
    return s;
}

QString columnWidthKey(const QString& group, int column)
{
    return group + "/ListColumnWidth/" + QString::number(column);
}

int defaultColumnWidth(int column)
{
    if (column == 0 || column == 1)
        return 20;
    return column == 2 || column == 3 ? 0 : -1;
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
        font.setPointSize(size);
    else if (style.font.pointSize() > 0)
        font.setPointSize(style.font.pointSize());
    else // a font given in pixels has no size in points
        font.setPixelSize(style.font.pixelSize());
    font.setWeight(readBool(key + "/bold", style.font.bold()) ? QFont::Bold : QFont::Normal);
    font.setItalic(readBool(key + "/italic", style.font.italic()));
    font.setUnderline(readBool(key + "/underline", style.font.underline()));
    const auto component = [&](const char* name, int present) {
        return std::clamp(readInt(key + name, present), 0, 255);
    };
    const int red = component("/red", style.color.red());
    const int green = component("/green", style.color.green());
    const int blue = component("/blue", style.color.blue());
    style.font = font;
    style.color = QColor(red, green, blue);
    if (withShow)
        style.show = readBool(key + "/show", style.show);
}

void writeStyle(const QString& key, bool withShow, const TextStyle& style)
{
    QSettings& s = settings();
    s.setValue(key + "/family", style.font.family());
    s.setValue(key + "/size", style.font.pointSize());
    s.setValue(key + "/bold", style.font.bold());
    s.setValue(key + "/italic", style.font.italic());
    s.setValue(key + "/underline", style.font.underline());
    s.setValue(key + "/red", style.color.red());
    s.setValue(key + "/green", style.color.green());
    s.setValue(key + "/blue", style.color.blue());
    if (withShow)
        s.setValue(key + "/show", style.show);
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
    if (!store())
        store() = std::make_unique<QSettings>("Mirabo", "MiraboViewer");
    return *store();
}

void releaseSettings()
{
    store().reset();
}

int readInt(const QString& key, int fallback, bool* present)
{
    const QVariant value = settings().value(key);
    bool ok = false;
    const int number = value.toInt(&ok);
    if (present)
        *present = value.isValid();
    return ok ? number : fallback;
}

QString readText(const QString& key, const QString& fallback, bool* present)
{
    if (present)
        *present = settings().contains(key);
    return settings().value(key, fallback).toString();
}

bool readBool(const QString& key, bool fallback)
{
    return settings().value(key, fallback).toBool();
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
    for (const auto& [element, style] : table.entries())
        writeStyle(group + element, hasShowKey(group), style);
}

bool readHighlightSelectedNode()
{
    return readBool(QString(kTreeGroup) + "/HighlightSelectedNode", true);
}

void writeHighlightSelectedNode(bool on)
{
    settings().setValue(QString(kTreeGroup) + "/HighlightSelectedNode", on);
}

bool readRealNodekitsCounter()
{
    return readBool(QString(kTreeGroup) + "/RealNodekitsCounter", false);
}

void writeRealNodekitsCounter(bool on)
{
    settings().setValue(QString(kTreeGroup) + "/RealNodekitsCounter", on);
}

bool readRealVrmlCounter()
{
    return readBool(QString(kTreeGroup) + "/RealVRMLCounter", false);
}

void writeRealVrmlCounter(bool on)
{
    settings().setValue(QString(kTreeGroup) + "/RealVRMLCounter", on);
}

bool readShowCatalogPart()
{
    return readBool(QString(kNodeOverviewGroup) + "/ShowCatalogPart", false);
}

void writeShowCatalogPart(bool on)
{
    settings().setValue(QString(kNodeOverviewGroup) + "/ShowCatalogPart", on);
}

int readFieldWatchHeight()
{
    return std::max(0, readInt(QString(kFieldWatchGroup) + "/FieldWatchHeight", 0));
}

void writeFieldWatchHeight(int height)
{
    settings().setValue(QString(kFieldWatchGroup) + "/FieldWatchHeight", height);
}

bool hasListColumnWidth(const QString& group, int column)
{
    return settings().contains(columnWidthKey(group, column));
}

int readListColumnWidth(const QString& group, int column)
{
    return readInt(columnWidthKey(group, column), defaultColumnWidth(column));
}

void writeListColumnWidth(const QString& group, int column, int width)
{
    settings().setValue(columnWidthKey(group, column), width);
}

} // namespace mirabo
