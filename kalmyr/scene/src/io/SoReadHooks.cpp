#include "SoReadHooks.h"

#include "FilePlaces.h"
#include "vrml/LocalUrl.h"

#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoFile.h>
#include <kalmyr/nodes/SoFragmentShader.h>
#include <kalmyr/nodes/SoGeometryShader.h>
#include <kalmyr/nodes/SoImageBackground.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTexture2.h>
#include <kalmyr/nodes/SoTexture3.h>
#include <kalmyr/nodes/SoTextureCubeMap.h>
#include <kalmyr/nodes/SoVertexShader.h>
#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/shapes/SoImage.h>
#include <kalmyr/vrml/SoVRMLBackground.h>
#include <kalmyr/vrml/SoVRMLCoordinate.h>
#include <kalmyr/vrml/SoVRMLCoordinateDeformer.h>
#include <kalmyr/vrml/SoVRMLGeo.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLImageTexture.h>
#include <kalmyr/vrml/SoVRMLIndexedFaceSet.h>
#include <kalmyr/vrml/SoVRMLIndexedLineSet.h>
#include <kalmyr/vrml/SoVRMLInline.h>
#include <kalmyr/vrml/SoVRMLMovieTexture.h>

#include <algorithm>
#include <cstdint>

namespace kalmyr::detail {

namespace {

/// The scene in a file; null after a posted error.
SoNode* readFile(SoInput& in, const SbString& file)
{
    SoInput content(&in);
    if (!content.openFile(file))
        return nullptr;
    return content.isFileVRML2() ? static_cast<SoNode*>(SoDB::readAllVRML(&content))
                                 : SoDB::readAll(&content);
}

/// Why a file is not among those that can be read.
const char* reasonForNone(const SoInput& in, const SbString& name)
{
    const SbString file = localFileName(name);
    return !file.isEmpty() && isThere(file, in.getFolder()) ? "is there, but cannot be read"
                                                            : "cannot be found";
}

/// Looks a file up and reads it; null, with a remark, when it cannot be had.
SoNode* readNamed(SoInput& in, const char* what, const SbString& name)
{
    const SbString file = in.findFile(localFileName(name));
    const SbString title = SbString(what) + " '" + name + "' ";
    if (file.isEmpty()) {
        in.warnHere(title + reasonForNone(in, name) + " and is left empty");
    } else if (in.isReading(file)) {
        in.warnHere(title + "holds itself and is left empty");
    } else if (!in.countFile()) {
        in.warnHere(title + "is left empty: the scene has too many files");
    } else {
        return readFile(in, file);
    }
    return nullptr;
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
        if (in.findFile(name).isEmpty())
            continue;
        SoNode* data = readNamed(in, "inline", url);
        if (data)
            node->setChildData(data);
        return data != nullptr;
    }
    if (node->url.getNum() > 0)
        in.warnHere("inline '" + node->url[0] + "' " + reasonForNone(in, node->url[0])
                    + " and is left empty");
    return false;
}

bool fillInline(SoInput& in, SoWWWInline* node)
{
    const SbString url = node->name.getValue();
    if (url.isEmpty() || (localFileName(url).isEmpty() && SoWWWInline::fetch(url, node)))
        return !url.isEmpty();
    SoNode* data = readNamed(in, "inline", url);
    if (data)
        node->setChildData(data);
    return data != nullptr;
}

template <class Inline>
void readInline(SoInput* in, SoNode* node)
{
    auto* content = static_cast<Inline*>(node);
    content->setDirectory(in->getFolder());
    if (SoInlineNode::getLoading() == SoInlineNode::ON_DEMAND)
        content->setPending();
    else
        fillInline(*in, content);
}

template <class Inline>
bool loadInline(Inline* node)
{
    SoInput in;
    in.setFolder(node->getDirectory());
    return fillInline(in, node);
}

void readFileNode(SoInput* in, SoNode* node)
{
    auto* file = static_cast<SoFile*>(node);
    if (file->name.getValue().isEmpty())
        return;
    if (SoNode* data = readNamed(*in, "file", file->name.getValue()))
        file->setChildData(data);
}

SbString pictureName(const SoTexture2& node)
{
    return node.filename.getValue();
}

SbString pictureName(const SoImage& node)
{
    return node.filename.getValue();
}

SbString pictureName(const SoVRMLImageTexture& node)
{
    return node.url[0];
}

template <class Texture>
void readTexture(SoInput* in, SoNode* node)
{
    auto* texture = static_cast<Texture*>(node);
    texture->setDirectory(in->getFolder());
    if (texture->findPicture())
        return;
    const SbString name = pictureName(*texture);
    const bool isReplaced = !texture->getPicture().isNull(); // by an image of its own
    in->warnHere("texture '" + name + "' " + reasonForNone(*in, name)
                 + (isReplaced ? "; the image in the node stands for it" : " and is left out"));
}

/// For files that are looked for when they are first needed.
template <class Node>
void readFolder(SoInput* in, SoNode* node)
{
    static_cast<Node*>(node)->setDirectory(in->getFolder());
}

/// Remarks on the first index without a point. Such faces and lines are left out when drawn.
template <class Shape>
void checkPoints(SoInput* in, SoNode* node)
{
    const auto* shape = static_cast<const Shape*>(node);
    const SoNode* coord = shape->coord.getValue();
    if (!coord || !coord->isOfType(SoVRMLCoordinate::getClassTypeId()))
        return;
    const int count = static_cast<const SoVRMLCoordinate*>(coord)->point.getNum();
    const auto indices = shape->coordIndex.values();
    const auto fault = std::find_if(indices.begin(), indices.end(), [count](std::int32_t index) {
        return index < -1 || index >= count;
    });
    if (fault == indices.end())
        return;
    in->warnHere("coordIndex[" + SbString(static_cast<int>(fault - indices.begin())) + "] is "
                 + SbString(*fault) + ", but there are " + SbString(count) + " points");
}

/// As an inline, if it is to be read at all.
void readLoadControl(SoInput* in, SoNode* node)
{
    auto* control = static_cast<SoVRMLInlineLoadControl*>(node);
    if (control->load.getValue())
        readInline<SoVRMLInline>(in, control);
    else
        control->setDirectory(in->getFolder());
}

void readGeoLOD(SoInput* in, SoNode* node)
{
    auto* lod = static_cast<SoVRMLGeoLOD*>(node);
    lod->makeFiles();
    for (SoNode* file : lod->getInternalChildren()->getNodes())
        readInline<SoVRMLInline>(in, file);
}

void readDeformer(SoInput*, SoNode* node)
{
    auto* deformer = static_cast<SoVRMLCoordinateDeformer*>(node);
    if (deformer->outputCoord.getNum() > 0)
        deformer->deform();
}

} // namespace

void installReadHooks()
{
    SoVRMLInline::setLoader(loadInline<SoVRMLInline>);
    SoWWWInline::setLoader(loadInline<SoWWWInline>);
    SoDB::setReadHook(SoVRMLInline::getClassTypeId(), readInline<SoVRMLInline>);
    SoDB::setReadHook(SoWWWInline::getClassTypeId(), readInline<SoWWWInline>);
    SoDB::setReadHook(SoFile::getClassTypeId(), readFileNode);
    SoDB::setReadHook(SoVRMLImageTexture::getClassTypeId(), readTexture<SoVRMLImageTexture>);
    SoDB::setReadHook(SoTexture2::getClassTypeId(), readTexture<SoTexture2>);
    SoDB::setReadHook(SoVRMLInlineLoadControl::getClassTypeId(), readLoadControl);
    SoDB::setReadHook(SoVRMLGeoLOD::getClassTypeId(), readGeoLOD);
    SoDB::setReadHook(SoVRMLCoordinateDeformer::getClassTypeId(), readDeformer);
    SoDB::setReadHook(SoImage::getClassTypeId(), readTexture<SoImage>);
    SoDB::setReadHook(SoTexture3::getClassTypeId(), readFolder<SoTexture3>);
    SoDB::setReadHook(SoTextureCubeMap::getClassTypeId(), readFolder<SoTextureCubeMap>);
    SoDB::setReadHook(SoImageBackground::getClassTypeId(), readFolder<SoImageBackground>);
    SoDB::setReadHook(SoVRMLBackground::getClassTypeId(), readFolder<SoVRMLBackground>);
    SoDB::setReadHook(SoVRMLMovieTexture::getClassTypeId(), readFolder<SoVRMLMovieTexture>);
    for (const SoType type : {SoVertexShader::getClassTypeId(), SoGeometryShader::getClassTypeId(),
                              SoFragmentShader::getClassTypeId()})
        SoDB::setReadHook(type, readFolder<SoShaderObject>);
    SoDB::setReadHook(SoVRMLIndexedFaceSet::getClassTypeId(), checkPoints<SoVRMLIndexedFaceSet>);
    SoDB::setReadHook(SoVRMLIndexedLineSet::getClassTypeId(), checkPoints<SoVRMLIndexedLineSet>);
}

} // namespace kalmyr::detail
