#pragma once

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/nodes/SoGroup.h>

#include <memory>
#include <string>
#include <vector>

class SoField;

/// Stands for a node of a file whose type nobody has registered: an instance of a prototype, a
/// script, a node of a module that is not there.
///
/// Fields that the file declares (`fields [ SFFloat a ]`) are real fields, and children are real
/// children. In VRML97 nodes that stand in its fields are real nodes in fields of their own, and
/// the other values are kept as text (SoForeignFields). What cannot be taken apart so is kept as
/// text as a whole and written back as it was.
class KALMYR_API SoUnknownNode : public SoGroup {
public:
    SoUnknownNode();
    static void initClass();
    static SoType getClassTypeId();
    SoType getTypeId() const override { return getClassTypeId(); }
    /// Each node has a table of its own.
    const SoFieldData* getFieldData() const override { return m_data.get(); }

    /// The type name as written in the file.
    const SbName& getUnknownTypeName() const { return m_typeName; }
    void setUnknownTypeName(const SbName& name) { m_typeName = name; }

    /// Adds a field of a registered field type. Null when there is no such type, or when the node
    /// has a field of that name already. The node owns it.
    SoField* declareField(const SbName& type, const SbName& name);
    /// Takes all fields away again. Only while nobody else knows the node.
    void removeFields();
    /// Whether the file declared the fields, be it none.
    bool hasDeclaration() const { return m_declared; }
    void setDeclaration(bool on) { m_declared = on; }

    /// Returns the text between the braces, when it is kept as text.
    const std::string& getBody() const { return m_body; }
    void setBody(std::string body) { m_body = std::move(body); }

    /// Looks for what may be shown in the node's place, when its fields have been read: a field
    /// `isA` names known types that the node is a kind of, the first of which gets the fields that
    /// it has in common; a field `alternateRep` holds a node.
    void findStandIn();
    SoNode* getStandIn() const { return m_standIn.get(); }

    bool affectsState() const override;
    void doAction(SoAction* action) override;
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    ~SoUnknownNode() override;

private:
    SbName m_typeName;
    std::vector<std::unique_ptr<SoField>> m_fields;
    std::unique_ptr<SoFieldData> m_data;
    std::string m_body;
    SoRef<SoNode> m_standIn; ///< not written
    bool m_declared = false;
};
