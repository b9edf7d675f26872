#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbName.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>

#include <string>
#include <string_view>
#include <vector>

class SoNodeCopier;

/// Holds the parts of a node in a file that the node itself has no place for, so that they are
/// written back: fields of later versions of a language, or of another program; and nodes in fields
/// that hold the node themselves. Changes here notify nobody.
class KALMYR_API SoForeignFields {
public:
    /// A field that the class does not have.
    struct Entry {
        std::string name;
        std::string value; ///< scene text, as the file has it
        /// Its nodes instead of the text, when they have names by which others may use them.
        std::vector<SoRef<SoNode>> nodes;
        bool isList = false; ///< the nodes stand in brackets, even a single one
    };
    /// A USE of a node around the field, which may be no value: fields cannot hold what holds them.
    struct Use {
        SbName field;
        int index;    ///< in front of the value of that number; 0 in a field of one value
        SoNode* node; ///< Not owned. The entry goes with the node.
    };
    SoForeignFields() = delete;

    /// Adds one behind those that the node has.
    static void add(const SoNode* node, std::string_view name, std::string_view value);
    static void add(const SoNode* node, std::string_view name, std::vector<SoRef<SoNode>> nodes,
                    bool isList);
    static void addUse(const SoNode* node, const Use& use);
    /// In the order in which they were added; empty for most nodes.
    static std::vector<Entry> of(const SoNode* node);
    static std::vector<Use> usesIn(const SoNode* node);
    /// Copies what the copier copies; a USE of anything else stays one of that.
    static void copy(const SoNode* from, const SoNode* to, SoNodeCopier& copier);
    /// The node dies, or is read anew.
    static void forget(const SoNode* node);
};
