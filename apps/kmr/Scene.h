#pragma once

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/io/SoInput.h>

#include <optional>
#include <string>
#include <vector>

#include "TextCounts.h"

/// One thing that the toolkit said about a file.
struct Remark {
    std::string file;
    int line = 0;
    int column = 0;
    std::string message;
};

/// A scene file as it was read.
struct Scene {
    std::string file;
    bool ok = false;
    bool stopped = false; ///< by the user
    SoInput::Format format = SoInput::UNKNOWN_FORMAT;
    bool compressed = false;
    std::string header;
    double seconds = 0;
    std::vector<SoRef<SoNode>> nodes; ///< those of the file itself
    SoRef<SoNode> root;               ///< a group around them, or the only one
    bool isRootOwn = false;           ///< the root is no node of the file
    std::optional<TextCounts> parsed; ///< of text
    std::vector<Remark> errors;
    std::vector<Remark> warnings;
};

/// Reads a file; shows how far it got when that takes longer than a second and a person looks on.
/// An interrupt (SIGINT) stops reading; the next one ends the program as it always does.
Scene readScene(const std::string& file, bool countText);

/// "kalmyr-ascii" and so on; "unknown" for a file with no known header.
const char* formatName(SoInput::Format format);
/// UNKNOWN_FORMAT for a name that is none.
SoInput::Format formatOfName(std::string_view name);

/// Prints "FILE:LINE:COLUMN: error: MESSAGE" for each error, or that reading was stopped. Returns
/// the exit status that stands for it.
int printErrors(const Scene& scene);

/// Takes down what is said about a scene while it lives.
class Listener {
public:
    explicit Listener(Scene& scene);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
};

/// Prints what goes wrong while it lives as "FILE: error: MESSAGE", or "warning".
class ErrorPrinter {
public:
    explicit ErrorPrinter(const std::string& file);
    ~ErrorPrinter();
    ErrorPrinter(const ErrorPrinter&) = delete;
    ErrorPrinter& operator=(const ErrorPrinter&) = delete;
};
