#pragma once

#include <kalmyr/base/Export.h>

#include <string>
#include <string_view>
#include <vector>

class SoNode;

/// Holds the fields of a node in a file that the node's class does not know: those of later
/// versions of a language, or of another program. Kept as text beside the node, so that it is
/// written back.
class KALMYR_API SoForeignFields {
public:
    struct Entry {
        std::string name;
        std::string value; ///< scene text, as the file has it
    };
    SoForeignFields() = delete;

    /// Adds one behind those that the node has. No change of the node: nobody is told.
    static void add(const SoNode* node, std::string_view name, std::string_view value);
    /// In the order in which they were added; empty for most nodes.
    static std::vector<Entry> of(const SoNode* node);
    static void copy(const SoNode* from, const SoNode* to);
    /// The node dies.
    static void forget(const SoNode* node);
};
