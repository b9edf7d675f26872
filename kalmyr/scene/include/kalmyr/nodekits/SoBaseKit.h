#pragma once

#include <kalmyr/base/SbString.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/nodekits/SoKitMacros.h>

#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

class SoNodeKitListPart;
class SoPath;

namespace kalmyr::detail {
struct PartName;
}

/// A node made of named parts, which the kit arranges below itself as its catalog says.
///
/// Every part is a node-valued field of the kit and at the same time stands in the kit's own little
/// graph, which is nobody else's business: actions pass through it, getChildren() is null.
/// Setting the field is the same as setPart(), except that a refusal posts a debug error. A part
/// that somebody takes out of that graph is the kit's part no more; put back, it is again.
///
/// Names of parts may lead into lists and into kits that are parts: "childList[2]",
/// "appearance.material", "childList[0].transform".
class KALMYR_API SoBaseKit : public SoNode {
    SO_NODE_HEADER(SoBaseKit)

public:
    SoBaseKit();
    static void initClass();

    SoSFNode callbackList; ///< nodes that call back, traversed before the other parts

    static const SoNodekitCatalog* getClassNodekitCatalog() { return s_catalog; }
    virtual const SoNodekitCatalog* getNodekitCatalog() const;

    /// The public part of that name. When it is not there it is made, with what must hold it, or
    /// null is returned, as `makeIfNeeded` says; an entry right behind a list's last one is made as
    /// well. Null for an unknown or private part.
    SoNode* getPart(const SbString& name, bool makeIfNeeded = true);

    /// Replaces a public part; null removes it. False, with nothing changed, for a part that is
    /// unknown, private or a group of the kit's own, for a node of another type than the catalog
    /// asks for, and for a node that holds the kit. The entry right behind a list's last one is
    /// appended; null removes an entry. Kits on the way to a part of a part are made, whether it
    /// is accepted or not.
    bool setPart(const SbString& name, SoNode* node);
    /// The same, and the part is not written to files as long as it holds nothing but defaults.
    bool setPartAsDefault(const SbString& name, SoNode* node);

    /// The name under which the kit, or a kit that is a part of it, has the node: also private
    /// parts and list entries. Empty when the node is no part.
    SbString getPartString(const SoNode* node) const;

    /// Sets fields of parts: set("material", "diffuseColor 1 0 0"). False at the first fault, with
    /// nothing changed at all; a null pointer is a broken contract.
    bool set(const SbString& part, const char* fields);
    /// Parts and their fields: set("material { diffuseColor 1 0 0 } transform { ... }"). A text
    /// that does not begin with a part and a brace sets fields of the kit itself, as every
    /// container has them.
    bool set(const char* text);
    bool set(const SbString& text);

    /// A new path (reference count 0) from the kit to a part, through what is between; null when
    /// there is no such part. As getPart(), but for private parts as well when they exist.
    SoPath* createPathToPart(const SbString& name, bool makeIfNeeded = true);

    /// Whether searches of the calling thread look at the parts of kits. Off at first. Searches for
    /// everything always do.
    static void setSearchingChildren(bool on);
    static bool isSearchingChildren();

    SoChildList* getInternalChildren() const override { return &m_children; }
    bool affectsState() const override;
    /// Traverses the parts.
    void doAction(SoAction* action) override;
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;
    void setToDefaults() override;
    bool acceptsValue(const SoField& field, const SoNode* value, SbString& why) const override;
    /// Parts are written when they differ from what a new kit makes itself.
    bool isFieldWritten(const SoField& field) const override;

protected:
    bool noteChange(const SoNotification& notification) override;
    ~SoBaseKit() override;

    /// Last statement of a kit's constructor, by way of SO_KIT_MAKE_PARTS().
    void makeDefaultParts(const SoNodekitCatalog& catalog);
    /// Returns whether a kit accepts a node as a part; the type is right already.
    virtual bool acceptsPart(int, const SoNode*) const { return true; }
    /// The part whatever its kind; null when it is not there.
    SoNode* getAnyPart(int part) const;
    /// Makes the part and the groups above it; null when nothing can be made.
    SoNode* makePart(int part);

    static SoNodekitCatalog* s_catalog;

private:
    using Seen = std::unordered_set<const SoBaseKit*>;

    SoSFNode* fieldOf(int part) const;
    bool mayStandAt(int part, const SoNode* node) const;
    SbString whyNot(int part, const SoNode* node) const;
    SoChildList* listAbove(int part);
    int indexAt(int part, const SoChildList& list) const;
    bool arrange(int part, SoNode* node);
    void followField(const SoField* field);
    void followEdit(const SoNotification& notification);
    void losePart(int part);
    void regainPart(int part, SoNode* node);
    bool setPartNode(int part, SoNode* node);
    void equipList(int part, SoNodeKitListPart* list) const;
    SoNode* partAt(const kalmyr::detail::PartName& name, bool makeIfNeeded);
    SoBaseKit* kitAt(const kalmyr::detail::PartName& name, bool makeIfNeeded);
    bool setListEntry(int part, int index, SoNode* node);
    std::string ownPartName(const SoNode* node) const;
    std::string nestedPartName(const SoNode* node, Seen& seen) const;
    bool appendPart(SoPath& path, int part) const;
    bool extendPath(SoPath& path, std::string_view name, bool makeIfNeeded);

    mutable SoChildList m_children;
    std::vector<SoNode*> m_placed; ///< by part number: what stands in the kit's graph; not owned
    /// Parts that others took out; not owned, only compared.
    std::vector<std::pair<int, const SoNode*>> m_lost;
};
