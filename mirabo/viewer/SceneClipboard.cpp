#include "mirabo/viewer/SceneClipboard.h"

#include "mirabo/core/ErrorScope.h"

#include <kalmyr/base/SoError.h>
#include <kalmyr/base/SoReadError.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoWriteAction.h>

#include <QMimeData>

#include <limits>
#include <string_view>

namespace mirabo {

namespace {

constexpr char kTextMimeType[] = "text/plain";

/// Holds the bytes once, in whatever form they are asked for.
class SceneMimeData final : public QMimeData {
public:
    explicit SceneMimeData(const QByteArray& text) : m_text(text) {}

    QStringList formats() const override { return {kSceneMimeType, kTextMimeType}; }
    bool hasFormat(const QString& type) const override { return formats().contains(type); }

protected:
    QVariant retrieveData(const QString& type, QVariant::Type) const override
    {
        if (type == kSceneMimeType)
            return m_text;
        if (type != kTextMimeType)
            return {};
        const auto end = m_text.indexOf('\0');
        return QString::fromLatin1(m_text.constData(), end < 0 ? m_text.size() : end);
    }

private:
    QByteArray m_text;
};

} // namespace

std::optional<QByteArray> pathText(SoPath& path)
{
    const FirstError<SoError> error; // told by the caller
    SoOutput out;
    out.setBuffer();
    SoWriteAction(&out).apply(&path);
    const std::string_view text = out.getText();
    if (out.hasFailed() || text.size() > std::numeric_limits<int>::max())
        return std::nullopt;
    return QByteArray(text.data(), static_cast<int>(text.size()));
}

std::unique_ptr<QMimeData> sceneMimeData(const QByteArray& text)
{
    return std::make_unique<SceneMimeData>(text);
}

bool mayHoldPath(const QMimeData* data)
{
    return data && (data->hasFormat(kSceneMimeType) || data->hasText());
}

SoRef<SoNode> readPastedNode(const QMimeData& data)
{
    const QByteArray bytes =
        data.hasFormat(kSceneMimeType) ? data.data(kSceneMimeType) : data.text().toLatin1();
    const FirstError<SoReadError> error;
    SoInput in;
    SoPath* read = nullptr;
    if (bytes.isEmpty() || !in.setBuffer(bytes.constData(), static_cast<std::size_t>(bytes.size()))
        || !SoDB::read(&in, read) || !read)
        return {};
    const SoRef<SoPath> path(read);
    return SoRef<SoNode>(path->getNode(path->getLength() > 1 ? 1 : 0));
}

} // namespace mirabo
