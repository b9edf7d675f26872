#include "FilePlaces.h"

#include "core/PercentText.h"

#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/io/SoInput.h>

#include <map>
#include <mutex>
#include <vector>

using kalmyr::detail::lookUp;
using kalmyr::detail::memoryFile;

namespace {

struct Places {
    std::mutex mutex;
    std::vector<SbString> directories;
    std::map<SbString, SbString> memoryFiles;
};

Places& places()
{
    static auto* p = new Places;
    return *p;
}

std::vector<SbString> directoriesNow()
{
    const std::scoped_lock lock(places().mutex);
    return places().directories;
}

bool isInMemory(const SbString& name)
{
    const std::scoped_lock lock(places().mutex);
    return places().memoryFiles.count(name) > 0;
}

bool exists(const SbString& path)
{
    return isInMemory(path)
           || (SbFileHelper::isAccessible(path, SbFileHelper::READABLE)
               && !SbFileHelper::isDirectory(path));
}

} // namespace

namespace kalmyr::detail {

std::optional<SbString> memoryFile(const SbString& name)
{
    const std::scoped_lock lock(places().mutex);
    const auto found = places().memoryFiles.find(name);
    return found == places().memoryFiles.end() ? std::nullopt : std::optional(found->second);
}

namespace {

SbString lookUpPlain(const SbString& name, const SbString& folder)
{
    if (name.isEmpty())
        return {};
    if (isInMemory(name))
        return name;
    if (!folder.isEmpty() && !SbFileHelper::isAbsolute(name)) {
        const SbString beside = SbFileHelper::join(folder, name);
        if (exists(beside))
            return beside;
    }
    if (exists(name))
        return name;
    if (SbFileHelper::isAbsolute(name))
        return {};
    for (const SbString& directory : directoriesNow()) {
        const SbString inside = SbFileHelper::join(directory, name);
        if (exists(inside))
            return inside;
    }
    return {};
}

} // namespace

SbString lookUp(const SbString& name, const SbString& folder)
{
    const SbString found = lookUpPlain(name, folder);
    if (!found.isEmpty() || name.view().find('%') == std::string_view::npos)
        return found;
    return lookUpPlain(SbString(decodePercent(name.view())), folder);
}

bool isThere(const SbString& name, const SbString& folder)
{
    const SbString path = SbFileHelper::isAbsolute(name) || folder.isEmpty()
                              ? name
                              : SbFileHelper::join(folder, name);
    return SbFileHelper::isAccessible(path, SbFileHelper::EXISTS);
}

} // namespace kalmyr::detail

void SoInput::addDirectoryFirst(const SbString& directory)
{
    const std::scoped_lock lock(places().mutex);
    places().directories.insert(places().directories.begin(), directory);
}

void SoInput::addDirectoryLast(const SbString& directory)
{
    const std::scoped_lock lock(places().mutex);
    places().directories.push_back(directory);
}

void SoInput::removeDirectory(const SbString& directory)
{
    const std::scoped_lock lock(places().mutex);
    std::erase(places().directories, directory);
}

void SoInput::clearDirectories()
{
    const std::scoped_lock lock(places().mutex);
    places().directories.clear();
}

const std::vector<SbString>& SoInput::getDirectories()
{
    thread_local std::vector<SbString> t_list; // what is returned stands still
    t_list = directoriesNow();
    return t_list;
}

void SoInput::addInMemoryTextFile(const SbString& name, const SbString& text)
{
    const std::scoped_lock lock(places().mutex);
    places().memoryFiles[name] = text;
}

void SoInput::removeInMemoryTextFile(const SbString& name)
{
    const std::scoped_lock lock(places().mutex);
    places().memoryFiles.erase(name);
}

bool SoInput::readTextFile(const SbString& name, SbString& text)
{
    const SbString found = lookUp(name, {});
    if (found.isEmpty())
        return false;
    if (const std::optional<SbString> memory = memoryFile(found)) {
        text = *memory;
        return true;
    }
    std::vector<char> bytes;
    if (!SbFileHelper::readFile(found, bytes))
        return false;
    text = SbString(bytes.data(), bytes.size());
    return true;
}
