#include "mirabo/core/InlineFetcher.h"

#include <kalmyr/base/SbString.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/vrml/SoVRMLInline.h>

#include <QUrl>

namespace mirabo {

namespace {

SoRef<SoNode> readLocal(const QString& path)
{
    SoInput in;
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
    const SoRef<SoNode> content =
        address.isLocalFile() ? readLocal(address.toLocalFile()) : SoRef<SoNode>();
    const auto* self = static_cast<InlineFetcher*>(data);
    const Before<Inline>& before = self->before<Inline>();
    if (content)
        node->setChildData(content.get());
    else if (before.callback)
        before.callback(url, before.data, node);
    else
        Q_EMIT static_cast<InlineFetcher*>(data)->notFetched(text);
}

} // namespace mirabo
