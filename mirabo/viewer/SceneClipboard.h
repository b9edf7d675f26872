#pragma once

#include <kalmyr/base/SoRef.h>

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>

class QMimeData;
class SoNode;
class SoPath;

namespace mirabo {

/// The text of a path, byte by byte; programs that only know plain text get it as Latin-1.
inline constexpr char kSceneMimeType[] = "application/x-mirabo-scene";

/// Writes a path, with the nodes on it, those that affect them and everything below its tail.
/// Nothing when there is not enough memory. The caller holds a read lock.
std::optional<QByteArray> pathText(SoPath& path);

/// Data for the clipboard. The text is converted when somebody asks for it.
std::unique_ptr<QMimeData> sceneMimeData(const QByteArray& text);

/// Whether the data may be a path that was written by pathText(), without reading it.
bool mayHoldPath(const QMimeData* data);

/// Reads a path and returns the node below its head: what hung there, with its way. Of a path
/// without a way the head itself. Null, with nothing told, for anything else.
SoRef<SoNode> readPastedNode(const QMimeData& data);

} // namespace mirabo
