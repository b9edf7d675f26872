#pragma once

#include "mirabo/preferences/TextStyle.h"

#include <QColor>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>

class QSettings;

/// The persistent preferences: one store per process, opened on first use and shared by every
/// view. Keys are a group text followed directly by a suffix; SettingKeys.h declares them with
/// their limits, and every value is checked when it is read. See SettingsStore for stores that
/// cannot be used, and for several processes.
namespace mirabo {

inline constexpr char kTreeGroup[] = "/TreeViewPreferences/";
inline constexpr char kNodeOverviewGroup[] = "/NodeOverviewPreferences/";
inline constexpr char kFieldWatchGroup[] = "/FieldWatchPreferences/";
inline constexpr char kMainFrameGroup[] = "/MiraboViewer/MiraboMainFrame";

/// Organisation "Mirabo", application "MiraboViewer". For looking only: what is written here is
/// neither checked nor told of when it fails.
QSettings& settings();
/// Writes what is pending and closes the store; the next use opens it again.
void releaseSettings();
/// Writes what is pending and takes over what other processes have written.
void syncSettings();

/// Tells the user what became of a store that cannot be read or written; what was to be told before
/// is told now. An empty function: it is kept until there is one.
void setSettingsListener(const std::function<void(const QString& message)>& listener);

/// Writes what is changed while it lives together and at once, when it ends. May be nested; the
/// outermost writes.
class SettingsChange {
public:
    SettingsChange();
    ~SettingsChange();
    SettingsChange(const SettingsChange&) = delete;
    SettingsChange& operator=(const SettingsChange&) = delete;
};

/// Stores a value within the limits of its key. Written by the event loop at the latest.
void writeSetting(const QString& key, const QVariant& value);
void removeSetting(const QString& key);
/// Whether a value of use is stored under the key.
bool isSettingStored(const QString& key);

/// The value of a key, or `fallback` where none of use is stored; `present` tells whether the key
/// was there. A number beyond its limits reads as the nearest one.
int readInt(const QString& key, int fallback, bool* present = nullptr);
QString readText(const QString& key, const QString& fallback, bool* present = nullptr);
bool readBool(const QString& key, bool fallback);
/// With the declared default of the key.
int readInt(const QString& key);
QString readText(const QString& key);
QStringList readTexts(const QString& key);
bool readBool(const QString& key);

/// "Default Value" and "Changed Value" of the field lists, in the application's font.
StyleTable defaultFieldStyles();
/// "Node Type", "Node/Part Name", "Reference Count" and "Node From Field" of the tree.
StyleTable defaultTreeStyles();

/// Reads every element of the table; its present values are the defaults. The "/show" key belongs
/// to the tree's elements only.
void readStyles(const QString& group, StyleTable& table);
/// Writes every key of the group together and at once.
void writeStyles(const QString& group, const StyleTable& table);
/// Whether writeStyles() would store the same for both. A page that was not changed since it was
/// loaded, and whose styles are stored, need not be written: another tool may have changed it.
bool haveSameSettings(const StyleTable& a, const StyleTable& b);
bool areStylesStored(const QString& group, const StyleTable& table);

/// Outline the selected object in the viewer (on).
bool readHighlightSelectedNode();
void writeHighlightSelectedNode(bool on);
/// Reference counts of node kits and of VRML nodes as the toolkit counts them (off).
bool readRealNodekitsCounter();
void writeRealNodekitsCounter(bool on);
bool readRealVrmlCounter();
void writeRealVrmlCounter(bool on);
/// Catalogue parts of node kits in the node overview (off).
bool readShowCatalogPart();
void writeShowCatalogPart(bool on);

/// Address of the server of the reference pages, without a slash behind it.
QString readDocumentationAddress();
void writeDocumentationAddress(const QString& address);

/// Colour and width, in points from 1 to 16, of the outline around the selected object.
QColor readOutlineColor();
void writeOutlineColor(const QColor& color);
int readOutlineWidth();
void writeOutlineWidth(int width);

/// Settings of what a start restores: place, size and layout of the window (on); bookmarks (on);
/// in the program, the file that was open last (off).
bool readRestoreWindow();
void writeRestoreWindow(bool on);
bool readRestoreBookmarks();
void writeRestoreBookmarks(bool on);
bool readRestoreFile();
void writeRestoreFile(bool on);

/// Least height of the field watch in pixels (0: as the layout has it).
int readFieldWatchHeight();
void writeFieldWatchHeight(int height);

/// Stored width of a field-list column in pixels; -1: none, its natural width.
int readListColumnWidth(const QString& group, int column);
/// Whether a width is stored: readListColumnWidth() then gives no default.
bool hasListColumnWidth(const QString& group, int column);
void writeListColumnWidth(const QString& group, int column, int width);

} // namespace mirabo
