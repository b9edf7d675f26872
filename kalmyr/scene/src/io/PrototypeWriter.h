#pragma once

#include <kalmyr/base/SbString.h>
#include <kalmyr/core/SoForeignFields.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class SoNode;
class SoVRMLProto;

namespace kalmyr::detail {

class WrittenText;
class WriteDialect;
class WriteInterruption;

/// Prototypes of VRML97: their declarations in front of the nodes.
class PrototypeWriter {
public:
    PrototypeWriter(WrittenText& text, const WriteDialect& dialect, WriteInterruption& interruption)
        : m_text(text), m_dialect(dialect), m_interruption(interruption)
    {
    }

    /// A prototype that something uses, with those that it uses itself.
    void collect(SoVRMLProto* proto);
    /// Those that nothing uses are kept beside the root of the file that declared them.
    void collectUnused(const SoNode* node);
    static bool isUnused(const SoForeignFields::Entry& entry);

    /// The declarations; those that others use in front of them. Relative urls are written as they
    /// read in files of `folder`.
    void write(const SbString& folder);
    /// What the prototype of an instance is called in this text; once all are written.
    std::string_view nameOf(const SoVRMLProto* proto) const;

private:
    void nameAll();
    std::string textOf(const SoVRMLProto* proto) const;
    std::string externalText(const SoVRMLProto& proto, const SbString& folder) const;
    void declare(std::string_view word, std::string_view name, std::string_view declaration);
    void writeUnused();

    WrittenText& m_text;
    const WriteDialect& m_dialect;
    WriteInterruption& m_interruption;
    std::vector<SoVRMLProto*> m_protos; // Not owned; the instances hold them.
    std::unordered_set<const SoVRMLProto*> m_met;
    std::vector<SoForeignFields::Entry> m_unused;
    std::unordered_map<const SoVRMLProto*, std::string> m_names; ///< other than their own
};

} // namespace kalmyr::detail
