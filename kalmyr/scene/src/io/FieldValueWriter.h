#pragma once

#include <kalmyr/base/SbString.h>

class SoField;
class SoFieldWriter;
class SoNode;
class SoOutput;

namespace kalmyr::detail {

class WrittenText;
class WriteDialect;
class WriteInterruption;

/// Writes the values of single fields: long ones so that the graph may be edited meanwhile, in
/// binary files as bytes, and relative urls so that they lead where they led.
class FieldValueWriter {
public:
    /// Nodes and engines in values are written by `values`.
    FieldValueWriter(WrittenText& text, const WriteDialect& dialect,
                     WriteInterruption& interruption, const SoOutput& out, SoFieldWriter& values);

    void write(const SoNode* node, const SoField& field);
    /// The folder of the file that is written; empty for other targets.
    const SbString& folder() const { return m_folder; }

private:
    void relocatedUrls(const SoField& field, const SbString& origin);
    void copyOf(const SoField& field);

    WrittenText& m_text;
    const WriteDialect& m_dialect;
    WriteInterruption& m_interruption;
    SoFieldWriter& m_values;
    SbString m_folder;
};

} // namespace kalmyr::detail
