#include "SoReadHooks.h"

#include "vrml/LocalUrl.h"

#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTexture2.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLImageTexture.h>
#include <kalmyr/vrml/SoVRMLInline.h>

namespace kalmyr::detail {

namespace {

bool readContent(SoInput& in, const SbString& file, SoVRMLInline* node)
{
    SoInput content(&in);
    if (!content.openFile(file))
        return false;
    SoNode* data = content.isFileVRML2() ? static_cast<SoNode*>(SoDB::readAllVRML(&content))
                                         : SoDB::readAll(&content);
    if (data)
        node->setChildData(data);
    return data != nullptr;
}

/// From the first url that can be had.
bool fillInline(SoInput& in, SoVRMLInline* node)
{
    for (const SbString& url : node->url.values()) {
        const SbString name = localFileName(url);
        if (name.isEmpty()) {
            if (SoVRMLInline::fetch(url, node))
                return true;
            continue;
        }
        const SbString file = in.findFile(name);
        if (file.isEmpty())
            continue;
        if (in.isReading(file)) {
            in.warnHere("inline '" + url + "' holds itself and is left empty");
            return false;
        }
        if (!in.countFile()) {
            in.warnHere("inline '" + url + "' is left empty: the scene has too many files");
            return false;
        }
        return readContent(in, file, node);
    }
    if (node->url.getNum() > 0)
        in.warnHere("inline '" + node->url[0] + "' cannot be found and is left empty");
    return false;
}

void readInline(SoInput* in, SoNode* node)
{
    auto* content = static_cast<SoVRMLInline*>(node);
    content->setDirectory(in->getFolder());
    fillInline(*in, content);
}

bool loadInline(SoVRMLInline* node)
{
    SoInput in;
    in.setFolder(node->getDirectory());
    return fillInline(in, node);
}

} // namespace

void installReadHooks()
{
    SoVRMLInline::setLoader(loadInline);
    SoDB::setReadHook(SoVRMLInline::getClassTypeId(), readInline);
    SoDB::setReadHook(SoVRMLImageTexture::getClassTypeId(), [](SoInput* in, SoNode* node) {
        static_cast<SoVRMLImageTexture*>(node)->setDirectory(in->getFolder());
    });
    SoDB::setReadHook(SoTexture2::getClassTypeId(), [](SoInput* in, SoNode* node) {
        static_cast<SoTexture2*>(node)->setDirectory(in->getFolder());
    });
}

} // namespace kalmyr::detail
