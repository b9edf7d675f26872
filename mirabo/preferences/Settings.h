#pragma once

#include "mirabo/preferences/TextStyle.h"

#include <QString>

class QSettings;

/// The persistent preferences: one store per process, opened on first use and shared by every
/// view. Keys are a group text followed directly by a suffix.
namespace mirabo {

inline constexpr char kTreeGroup[] = "/TreeViewPreferences/";
inline constexpr char kNodeOverviewGroup[] = "/NodeOverviewPreferences/";
inline constexpr char kFieldWatchGroup[] = "/FieldWatchPreferences/";
inline constexpr char kMainFrameGroup[] = "/MiraboViewer/MiraboMainFrame";

/// Organisation "Mirabo", application "MiraboViewer".
QSettings& settings();
/// Writes what is pending and closes the store; the next use opens it again.
void releaseSettings();

/// The value of a key, or `fallback`; `present` tells whether the key was there.
int readInt(const QString& key, int fallback, bool* present = nullptr);
QString readText(const QString& key, const QString& fallback, bool* present = nullptr);
bool readBool(const QString& key, bool fallback);

/// "Default Value" and "Changed Value" of the field lists, in the application's font.
StyleTable defaultFieldStyles();
/// "Node Type", "Node/Part Name", "Reference Count" and "Node From Field" of the tree.
StyleTable defaultTreeStyles();

/// Reads every element of the table; its present values are the defaults. The "/show" key belongs
/// to the tree's elements only.
void readStyles(const QString& group, StyleTable& table);
void writeStyles(const QString& group, const StyleTable& table);

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

/// Least height of the field watch in pixels (0: as the layout has it).
int readFieldWatchHeight();
void writeFieldWatchHeight(int height);

/// Stored width of a field-list column in pixels; -1: none, its natural width.
int readListColumnWidth(const QString& group, int column);
/// Whether a width was ever stored: readListColumnWidth() then gives no default.
bool hasListColumnWidth(const QString& group, int column);
void writeListColumnWidth(const QString& group, int column, int width);

} // namespace mirabo
