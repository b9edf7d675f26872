#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbName.h>
#include <kalmyr/core/SoType.h>

#include <unordered_map>
#include <vector>

/// Lists the parts that the instances of a class of node kits may have, and where they hang.
///
/// The parts form a tree. The first is "this", the kit itself; every other part hangs below another
/// one, to the left of its right sibling. A part with parts below it is a group that the kit makes
/// and keeps for itself. Numbers are the same in the catalogs of derived kits.
/// One catalog serves all instances of a class; it is filled by the class's initClass().
class KALMYR_API SoNodekitCatalog {
public:
    /// Name of the kit as the first part.
    static const SbName& thisName();

    /// A catalog with nothing but "this".
    explicit SoNodekitCatalog(SoType kitType);
    /// The catalog of a class derived from that of `parent`, to be extended.
    SoNodekitCatalog(const SoNodekitCatalog& parent, SoType kitType);

    int getNumEntries() const { return static_cast<int>(m_parts.size()); }
    /// Number of the part of that name; -1 when there is none.
    int getPartNumber(const SbName& name) const;

    /// The rest asks by number or by name. A part that is not there, -1, has no name, the bad type,
    /// parent number -1, and is neither public nor anything else. Other numbers out of range get
    /// the same answers, with an error posted.
    const SbName& getName(int part) const;
    /// Returns the type that a node must have to stand there.
    SoType getType(int part) const;
    SoType getType(const SbName& name) const { return getType(getPartNumber(name)); }
    /// Returns the type that the kit makes when the part is asked for.
    SoType getDefaultType(int part) const;
    SoType getDefaultType(const SbName& name) const { return getDefaultType(getPartNumber(name)); }
    /// False when a new kit has the part from the beginning.
    bool isNullByDefault(int part) const;
    bool isNullByDefault(const SbName& name) const { return isNullByDefault(getPartNumber(name)); }
    /// True when no other part hangs below it.
    bool isLeaf(int part) const;
    bool isLeaf(const SbName& name) const { return isLeaf(getPartNumber(name)); }
    /// Only public parts are handed out and may be replaced.
    bool isPublic(int part) const;
    bool isPublic(const SbName& name) const { return isPublic(getPartNumber(name)); }

    /// The part that it hangs below: 0, "this", for those right below the kit. "This" is its own.
    int getParentPartNumber(int part) const;
    int getParentPartNumber(const SbName& name) const
    {
        return getParentPartNumber(getPartNumber(name));
    }
    const SbName& getParentName(int part) const { return getName(getParentPartNumber(part)); }
    const SbName& getParentName(const SbName& name) const
    {
        return getParentName(getPartNumber(name));
    }
    /// The next part below the same parent; -1 for the last one.
    int getRightSiblingPartNumber(int part) const;
    const SbName& getRightSiblingName(int part) const
    {
        return getName(getRightSiblingPartNumber(part));
    }
    const SbName& getRightSiblingName(const SbName& name) const
    {
        return getRightSiblingName(getPartNumber(name));
    }
    /// Parts right below, from left to right.
    const std::vector<int>& getPartsBelow(int part) const;

    /// True for a part that is an SoNodeKitListPart; then what group holds the entries, and what
    /// they must be (the first type is made when an entry is asked for).
    bool isList(int part) const;
    bool isList(const SbName& name) const { return isList(getPartNumber(name)); }
    SoType getListContainerType(int part) const;
    const std::vector<SoType>& getListItemTypes(int part) const;
    bool isListItem(int part, SoType type) const;

    /// For initClass(). They return the part's number, or -1 after a debug error: names are unique,
    /// parent and right sibling are there and fit. An empty right sibling: the last one.
    struct Place {
        SbName parent;
        SbName rightSibling;
    };
    /// A group of the kit's own; it comes into being with the first part below it unless
    /// `fromTheBeginning`.
    int addGroup(const SbName& name, SoType type, const Place& place, bool fromTheBeginning);
    int addPart(const SbName& name, SoType type, SoType defaultType, const Place& place,
                bool isPublic = true);
    int addListPart(const SbName& name, SoType listPartType, SoType containerType,
                    std::vector<SoType> itemTypes, const Place& place);
    /// Restricts an inherited part to a derived type.
    bool narrowTypes(const SbName& name, SoType type, SoType defaultType);
    bool setNullByDefault(const SbName& name, bool on);

private:
    struct Part {
        SbName name;
        SoType type;
        SoType defaultType;
        SoType containerType;
        std::vector<SoType> itemTypes;
        std::vector<int> below;
        int parent = 0;
        bool isNullByDefault = true;
        bool isPublic = true;
        bool isList = false;
    };
    const Part* find(int part) const;
    int add(Part part, const Place& place);

    std::vector<Part> m_parts;
    std::unordered_map<SbName, int> m_numbers;
};
