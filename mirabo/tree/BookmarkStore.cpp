#include "mirabo/tree/BookmarkStore.h"

#include "mirabo/preferences/Settings.h"

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QStringList>

#include <algorithm>

namespace mirabo {

namespace {

constexpr char kScenesKey[] = "/Bookmarks/Scenes"; ///< written last, first

/// Names of files do not make keys.
QString keyOf(const QString& scene)
{
    const QByteArray hash = QCryptographicHash::hash(scene.toUtf8(), QCryptographicHash::Sha1);
    return "/Bookmarks/" + QString::fromLatin1(hash.toHex());
}

QString toText(const std::vector<BookmarkPath>& paths)
{
    QJsonArray json;
    const std::size_t count = std::min<std::size_t>(paths.size(), kMaxStoredBookmarks);
    for (std::size_t i = 0; i < count; ++i)
        json << paths[i].toJson();
    return QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact));
}

} // namespace

std::vector<BookmarkPath> readBookmarks(const QString& scene)
{
    std::vector<BookmarkPath> paths;
    if (scene.isEmpty())
        return paths;
    const QString text = readText(keyOf(scene));
    for (const QJsonValue& value : QJsonDocument::fromJson(text.toUtf8()).array()) {
        const BookmarkPath path = BookmarkPath::fromJson(value.toArray());
        if (!path.isEmpty() && paths.size() < kMaxStoredBookmarks)
            paths.push_back(path);
    }
    return paths;
}

void writeBookmarks(const QString& scene, const std::vector<BookmarkPath>& paths,
                    const std::vector<BookmarkPath>& known)
{
    if (scene.isEmpty())
        return;
    const QString text = toText(paths);
    const bool isChanged = text != toText(known);
    syncSettings(); // the list of scenes is everybody's
    const QStringList stored = readTexts(kScenesKey);
    QStringList scenes = stored;
    const bool wasKept = scenes.removeAll(scene) > 0;
    if (!wasKept && (paths.empty() || !isChanged))
        return;
    const SettingsChange change;
    if (isChanged && paths.empty()) {
        removeSetting(keyOf(scene));
    } else {
        if (isChanged)
            writeSetting(keyOf(scene), text);
        scenes.prepend(scene);
    }
    while (scenes.size() > kMaxStoredScenes)
        removeSetting(keyOf(scenes.takeLast()));
    if (scenes != stored)
        writeSetting(kScenesKey, scenes);
}

} // namespace mirabo
