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

InlineFetcher::InlineFetcher(QObject* parent) : QObject(parent)
{
    SoWWWInline::setFetchURLCallBack(&InlineFetcher::fetch<SoWWWInline>, this);
    SoVRMLInline::setFetchURLCallBack(&InlineFetcher::fetch<SoVRMLInline>, this);
}

InlineFetcher::~InlineFetcher()
{
    SoWWWInline::setFetchURLCallBack(nullptr, nullptr);
    SoVRMLInline::setFetchURLCallBack(nullptr, nullptr);
}

template <class Inline>
void InlineFetcher::fetch(const SbString& url, void* data, Inline* node)
{
    const QString text = QString::fromUtf8(url.getString());
    const QUrl address(text);
    const SoRef<SoNode> content =
        address.isLocalFile() ? readLocal(address.toLocalFile()) : SoRef<SoNode>();
    if (content)
        node->setChildData(content.get());
    else
        Q_EMIT static_cast<InlineFetcher*>(data)->notFetched(text);
}

} // namespace mirabo
