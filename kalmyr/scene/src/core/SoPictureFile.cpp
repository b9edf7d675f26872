#include <kalmyr/core/SoPictureFile.h>

#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/base/SoError.h>
#include <kalmyr/core/SoImageFile.h>

#include "core/CacheLock.h"

void SoPictureFile::setDirectory(const SbString& directory)
{
    m_directory = directory;
    m_loadedName.makeEmpty();
}

bool SoPictureFile::find(const SbString& name)
{
    if (name.isEmpty() || SbFileHelper::isAccessible(SoImageFile::findFile(name, m_directory)))
        return true;
    m_loadedName = name;
    m_loaded.makeNull();
    return false;
}

const SbImage& SoPictureFile::get(const SbString& name, const SbImage& otherwise, const char* kind)
{
    if (name.isEmpty())
        return otherwise;
    SbString error, path;
    {
        const kalmyr::detail::CacheLock lock;
        if (name == m_loadedName)
            return m_loaded.isNull() ? otherwise : m_loaded;
        m_loadedName = name;
        path = SoImageFile::findFile(name, m_directory);
        if (SoImageFile::read(path, m_loaded, &error))
            return m_loaded;
    }
    // Without the lock: a handler may do anything.
    SoError::post("%s \"%s\": %s", kind, path.getString(), error.getString());
    return otherwise;
}
