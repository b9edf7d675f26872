#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbString.h>

#include <vector>

/// Descriptions of the libraries that a process has loaded on top of the toolkit, for reports and
/// "about" texts.
class KALMYRBASE_API SoModule {
public:
    struct Description {
        SbString name; ///< file name; the key
        SbString version;
        SbString compiler;     ///< name of the compiler that built it
        SbString architecture; ///< "64 bits"
    };

    SoModule() = delete;

    /// Adds a description, or replaces the one of that name.
    static void add(const Description& description);
    static void remove(const SbString& name);
    /// In the order of their arrival; null for an unknown name.
    static const std::vector<Description>& getAll();
    static const Description* find(const SbString& name);
};
