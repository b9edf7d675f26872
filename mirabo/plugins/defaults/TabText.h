#pragma once

#include <QString>
#include <QStringList>

#include <vector>

/// Tables as spreadsheets put them on the clipboard: cells parted by tabs, rows by line ends (LF,
/// CRLF or CR). A cell with a tab, a line end or a quote in it stands in double quotes, with its
/// own quotes doubled.

/// The rows of a table. A line end behind the last row begins no other one. No rows for an empty
/// text.
std::vector<QStringList> readTabText(const QString& text);

/// Adds a cell to a text, with what parts it from the one before.
void writeTabCell(QString& text, const QString& cell, bool isFirstInRow);
