#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbString.h>

/// Shared libraries by name, at run time.
class KALMYRBASE_API SoDynamicLibManager {
public:
    /// An open library; null is none.
    using Handle = void*;

    SoDynamicLibManager() = delete;

    /// Opens a library by path or by a name for the system's search. Null when that fails; `error`
    /// then says why. Every success wants its own close().
    static Handle open(const SbString& name, SbString* error = nullptr);
    static bool close(Handle library, SbString* error = nullptr);
    /// The address of an exported symbol, or null.
    static void* symbol(Handle library, const char* name, SbString* error = nullptr);
    template <typename Function>
    static Function* function(Handle library, const char* name, SbString* error = nullptr)
    {
        return reinterpret_cast<Function*>(symbol(library, name, error));
    }

    /// The path of the library or program that a function or global of this process is in; empty
    /// when unknown.
    static SbString getLibraryFromSymbol(const void* address);
    template <typename R, typename... A>
    static SbString getLibraryFromSymbol(R (*function)(A...))
    {
        return getLibraryFromSymbol(reinterpret_cast<const void*>(function));
    }
    /// The file name that a library of this plain name has here: `libNAME.so`, `NAME.dll`.
    static SbString fileName(const SbString& plainName);
};
