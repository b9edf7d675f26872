#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbString.h>
#include <kalmyr/core/SoTokenizer.h>

#include <string>

class SoEngine;
class SoNode;
class SoPath;

/// The source of a field's value: the tokenizer, and, for node values, whoever can read nodes.
class KALMYR_API SoFieldReader {
public:
    explicit SoFieldReader(SoTokenizer& tokens) : text(tokens) {}
    virtual ~SoFieldReader() = default;

    /// Reads a node ("NULL", "USE x", "DEF x Type { }", "Type { }") with reference count 0 if new.
    /// False after an error. The plain reader knows NULL only.
    virtual bool readNode(SoNode*& node);
    /// The same for an engine.
    virtual bool readEngine(SoEngine*& engine);

    /// Leaves out the value that was read from offset `at` on. Readers of scenes report it and go
    /// on (true), the plain reader fails.
    virtual bool leaveOut(std::size_t at, const SbString& why);

    SoTokenizer& text;
};

/// Where a field writes its value: text with the layout of scene files, and nodes by callback.
class KALMYR_API SoFieldWriter {
public:
    explicit SoFieldWriter(std::string& target) : text(target) {}
    virtual ~SoFieldWriter() = default;

    /// Writes a node, or NULL. The plain writer writes the node's name or "<TypeName>" form only.
    virtual void writeNode(const SoNode* node);
    /// The same for an engine.
    virtual void writeEngine(const SoEngine* engine);
    /// Breaks the line inside long lists; the plain writer writes a blank.
    virtual void breakLine() { text += ' '; }
    /// Gives the buffer to its target when it has grown; called between values of long fields.
    virtual void flushIfLarge() {}

    std::string& text;
};
