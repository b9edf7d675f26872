#include <kalmyr/nodes/SoImageBackground.h>

#include "core/CacheLock.h"
#include <kalmyr/base/SoError.h>
#include <kalmyr/core/SoImageFile.h>

namespace {

constexpr SoEnumEntry kStyles[] = {
    {"STRETCH", SoImageBackground::STRETCH}, {"FIT", SoImageBackground::FIT},
    {"FILL", SoImageBackground::FILL},       {"CENTER", SoImageBackground::CENTER},
    {"TILE", SoImageBackground::TILE},
};

} // namespace

SO_NODE_SOURCE(SoImageBackground)

SoImageBackground::SoImageBackground()
{
    SO_NODE_CONSTRUCTOR(SoBackground);
    SO_ADD_FIELD(filename, (""));
    SO_ADD_EMPTY_FIELD(image);
    SO_ADD_FIELD(style, (STRETCH));
    style.setEnums(kStyles);
}

SoImageBackground::~SoImageBackground() = default;

void SoImageBackground::initClass()
{
    SO_NODE_INIT_CLASS(SoImageBackground, SoBackground, "ImageBackground");
}

void SoImageBackground::setDirectory(const SbString& directory)
{
    m_directory = directory;
    m_loadedName.makeEmpty();
}

void SoImageBackground::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    SoBackground::copyContents(from, copier);
    setDirectory(static_cast<const SoImageBackground*>(from)->m_directory);
}

const SbImage& SoImageBackground::getPicture()
{
    const SbString& name = filename.getValue();
    if (filename.isIgnored() || name.isEmpty())
        return image.getValue();
    SbString error;
    {
        const kalmyr::detail::CacheLock lock;
        if (name == m_loadedName)
            return m_loaded;
        m_loadedName = name;
        if (SoImageFile::read(SoImageFile::findFile(name, m_directory), m_loaded, &error))
            return m_loaded;
    }
    // Without the lock: a handler may do anything.
    SoError::post("ImageBackground \"%s\": %s", getName().getString(), error.getString());
    return m_loaded;
}
