#include <kalmyr/base/SoDynamicLibManager.h>

#include <system_error>

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <dlfcn.h>
#include <link.h>
#include <unistd.h>
#endif

namespace {

void setError(SbString* to, bool failed)
{
    if (!to) {
        return;
    }
    to->makeEmpty();
    if (failed) {
#if defined(_WIN32)
        *to = std::system_category().message(static_cast<int>(GetLastError()));
#else
        *to = dlerror();
#endif
    }
}

} // namespace

#if defined(_WIN32)

SoDynamicLibManager::Handle SoDynamicLibManager::open(const SbString& name, SbString* error)
{
    Handle library = LoadLibraryA(name.getString());
    setError(error, !library);
    return library;
}

bool SoDynamicLibManager::close(Handle library, SbString* error)
{
    const bool ok = library && FreeLibrary(static_cast<HMODULE>(library));
    setError(error, !ok);
    return ok;
}

void* SoDynamicLibManager::symbol(Handle library, const char* name, SbString* error)
{
    void* address =
        library ? reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name))
                : nullptr;
    setError(error, !address);
    return address;
}

SbString SoDynamicLibManager::getLibraryFromSymbol(const void* address)
{
    HMODULE module = nullptr;
    constexpr DWORD kFlags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    char path[MAX_PATH] = "";
    if (GetModuleHandleExA(kFlags, static_cast<const char*>(address), &module)) {
        GetModuleFileNameA(module, path, MAX_PATH);
    }
    return path;
}

SbString SoDynamicLibManager::fileName(const SbString& plainName)
{
    return plainName + ".dll";
}

#else

SoDynamicLibManager::Handle SoDynamicLibManager::open(const SbString& name, SbString* error)
{
    if (name.isEmpty()) {
        // The dynamic linker would take it for the program itself.
        if (error) {
            *error = "no library name given";
        }
        return nullptr;
    }
    Handle library = dlopen(name.getString(), RTLD_LAZY | RTLD_LOCAL);
    setError(error, !library);
    return library;
}

bool SoDynamicLibManager::close(Handle library, SbString* error)
{
    if (!library) {
        if (error) {
            *error = "no library given";
        }
        return false;
    }
    const bool ok = dlclose(library) == 0;
    setError(error, !ok);
    return ok;
}

void* SoDynamicLibManager::symbol(Handle library, const char* name, SbString* error)
{
    if (!library) {
        // The dynamic linker would search the whole process.
        if (error) {
            *error = "no library given";
        }
        return nullptr;
    }
    void* address = dlsym(library, name);
    setError(error, !address);
    return address;
}

SbString SoDynamicLibManager::getLibraryFromSymbol(const void* address)
{
    Dl_info info{};
    link_map* map = nullptr;
    if (!address || !dladdr1(address, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP)
        || !info.dli_fname) {
        return {};
    }
    // The program itself goes by the name it was called with, which says little after a change of
    // folder.
    char program[4096];
    const ssize_t length =
        map && !*map->l_name ? readlink("/proc/self/exe", program, sizeof program) : -1;
    return length > 0 ? SbString(program, static_cast<std::size_t>(length))
                      : SbString(info.dli_fname);
}

SbString SoDynamicLibManager::fileName(const SbString& plainName)
{
    return "lib" + plainName + ".so";
}

#endif
