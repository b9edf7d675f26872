#include <kalmyr/nodes/SoStackTexture.h>

#include "core/CacheLock.h"
#include <kalmyr/actions/SoAction.h>
#include <kalmyr/base/SoError.h>
#include <kalmyr/core/SoImageFile.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoLookExtras.h>

#include <algorithm>

namespace {

constexpr SoEnumEntry kModels[] = {
    {"MODULATE", SoStackTexture::MODULATE},
    {"DECAL", SoStackTexture::DECAL},
    {"BLEND", SoStackTexture::BLEND},
    {"REPLACE", SoStackTexture::REPLACE},
};

/// Puts a picture behind those that are there.
bool append(const SbImage& image, std::vector<unsigned char>& bytes, SbImage& first)
{
    if (bytes.empty())
        first = image;
    if (image.getSize() != first.getSize() || image.getComponents() != first.getComponents())
        return false;
    bytes.insert(bytes.end(), image.getBytes(), image.getBytes() + image.getByteCount());
    return true;
}

} // namespace

SO_NODE_SOURCE(SoStackTexture)

SoStackTexture::SoStackTexture()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_EMPTY_FIELD(filenames);
    SO_ADD_EMPTY_FIELD(images);
    SO_ADD_FIELD(model, (MODULATE));
    model.setEnums(kModels);
    SO_ADD_FIELD(blendColor, (0.0f, 0.0f, 0.0f));
}

SoStackTexture::~SoStackTexture() = default;

void SoStackTexture::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoStackTexture, SoNode, "StackTexture");
}

void SoStackTexture::setDirectory(const SbString& directory)
{
    m_directory = directory;
    m_tried = false;
}

void SoStackTexture::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    SoNode::copyContents(from, copier);
    setDirectory(static_cast<const SoStackTexture*>(from)->m_directory);
}

const SbImage& SoStackTexture::getPictures()
{
    SbString reason;
    if (!load(reason))
        SoError::post("%s \"%s\": %s", getTypeId().getName().getString(), getName().getString(),
                      reason.getString());
    return m_loaded;
}

/// False after the first failure with these values.
bool SoStackTexture::load(SbString& reason)
{
    const kalmyr::detail::CacheLock lock;
    const auto names = filenames.values();
    const bool isSame =
        std::equal(names.begin(), names.end(), m_loadedNames.begin(), m_loadedNames.end());
    const bool fromFiles = !names.empty() && !filenames.isIgnored();
    if (m_tried && isSame && (fromFiles || m_given == images.getValue().getBytes()))
        return true;
    m_tried = true;
    m_given = images.getValue().getBytes();
    m_loadedNames.assign(names.begin(), names.end());
    m_loaded.makeNull();
    if (!fromFiles) {
        if (images.getValue().isNull())
            return true;
        if (!isUsable(images.getValue(), reason))
            return false;
        m_loaded = images.getValue();
        return true;
    }
    std::vector<unsigned char> bytes;
    SbImage first;
    for (const SbString& name : names) {
        SbImage image;
        if (!SoImageFile::read(SoImageFile::findFile(name, m_directory), image, &reason))
            return false;
        if (!append(image, bytes, first)) {
            reason = "its pictures are of different sizes or components";
            return false;
        }
    }
    SbImage all;
    const SbVec3i32 size(first.getWidth(), first.getHeight(), static_cast<int>(names.size()));
    if (!all.adopt(size, first.getComponents(), std::move(bytes)) || !isUsable(all, reason))
        return false;
    m_loaded = all;
    return true;
}

void SoStackTexture::set(SoAction* action, SoTextureStage::Kind kind, int wrapS, int wrapT,
                         int wrapR)
{
    SoState* state = action->getState();
    if (!SoOverrideElement::maySet(state, this, SoOverrideElement::TEXTURE))
        return;
    SoTextureValues values;
    values.image = getPictures();
    values.wrapS = static_cast<SoTextureValues::Wrap>(wrapS);
    values.wrapT = static_cast<SoTextureValues::Wrap>(wrapT);
    values.model = static_cast<SoTextureValues::Model>(model.getValue());
    values.blendColor = blendColor.getValue();
    SoLookExtrasElement::setTexture(state, this, values, kind,
                                    static_cast<SoTextureValues::Wrap>(wrapR));
}
