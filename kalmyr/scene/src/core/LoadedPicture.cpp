#include "core/LoadedPicture.h"

#include <kalmyr/base/SoError.h>
#include <kalmyr/core/SoImageFile.h>

#include "core/CacheLock.h"

namespace kalmyr::detail {

const SbImage& loadPicture(const SbString& name, const SbString& directory, const char* what,
                           SbString& loadedName, SbImage& loaded)
{
    SbString error, path;
    {
        const CacheLock lock;
        if (name == loadedName)
            return loaded;
        loadedName = name;
        path = SoImageFile::findFile(name, directory);
        if (SoImageFile::read(path, loaded, &error))
            return loaded;
    }
    // Without the lock: a handler may do anything.
    SoError::post("%s \"%s\": %s", what, path.getString(), error.getString());
    return loaded;
}

} // namespace kalmyr::detail
