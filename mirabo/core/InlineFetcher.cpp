#include "mirabo/core/InlineFetcher.h"

#include <kalmyr/base/SbString.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/vrml/SoVRMLInline.h>

#include <QCoreApplication>
#include <QPointer>
#include <QThread>
#include <QUrl>

#include <optional>

namespace mirabo {

namespace {

/// An input whose warnings go to a list.
class CollectingInput final : public SoInput {
public:
    explicit CollectingInput(ReadMessages& messages) : m_messages(messages) {}
    void warn(const SbString& fileName, int line, int column, const SbString& text) override
    {
        SoInput::warn(fileName, line, column, text);
        m_messages.add({ReadMessage::Warning, fileName, line, column, text});
    }

private:
    ReadMessages& m_messages;
};

SoRef<SoNode> readLocal(const QString& path, ReadMessages& messages)
{
    // The process has one handler: scopes of several threads would put back each other's.
    std::optional<ReadErrorCollector> collector;
    if (QThread::currentThread() == QCoreApplication::instance()->thread())
        collector.emplace(messages);
    CollectingInput in(messages);
    if (path.isEmpty() || !in.openFile(path.toUtf8().constData()))
        return nullptr;
    return SoRef<SoNode>(SoDB::readAll(&in));
}

} // namespace

template <>
const InlineFetcher::Before<SoWWWInline>& InlineFetcher::before() const
{
    return m_before;
}

template <>
const InlineFetcher::Before<SoVRMLInline>& InlineFetcher::before() const
{
    return m_vrmlBefore;
}

template <class Inline>
void InlineFetcher::Before<Inline>::replace(InlineFetcher* fetcher)
{
    callback = Inline::getFetchURLCallBack();
    data = Inline::getFetchURLData();
    Inline::setFetchURLCallBack(&InlineFetcher::fetch<Inline>, fetcher);
}

template <class Inline>
void InlineFetcher::Before<Inline>::putBack(const InlineFetcher* fetcher)
{
    if (Inline::getFetchURLData() == fetcher) // else the host has chosen another since
        Inline::setFetchURLCallBack(callback, data);
}

InlineFetcher::InlineFetcher(QObject* parent) : QObject(parent)
{
    qRegisterMetaType<ReadMessages>("mirabo::ReadMessages"); // other threads may fetch, too
    m_before.replace(this);
    m_vrmlBefore.replace(this);
}

InlineFetcher::~InlineFetcher()
{
    m_before.putBack(this);
    m_vrmlBefore.putBack(this);
}

template <class Inline>
void InlineFetcher::fetch(const SbString& url, void* data, Inline* node)
{
    const QString text = QString::fromUtf8(url.getString());
    const QUrl address(text);
    ReadMessages messages(text);
    const SoRef<SoNode> content =
        address.isLocalFile() ? readLocal(address.toLocalFile(), messages) : SoRef<SoNode>();
    const QPointer<InlineFetcher> self(static_cast<InlineFetcher*>(data)); // the host may end us
    const Before<Inline>& before = self->before<Inline>();
    if (content) {
        node->setChildData(content.get());
    } else if (before.callback) {
        before.callback(url, before.data, node);
    } else {
        if (messages.isEmpty())
            messages.add({ReadMessage::Warning, url, 0, 0, "not loaded; its inline is left empty"});
        Q_EMIT self->notFetched(text);
    }
    if (self && !messages.isEmpty())
        Q_EMIT self->messagesPosted(messages);
}

} // namespace mirabo
