#pragma once

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
/// children. Without a declaration the body is kept as text and written back as it was.
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
    /// Whether the file declared the fields, be it none.
    bool hasDeclaration() const { return m_declared; }
    void setDeclaration(bool on) { m_declared = on; }

    /// What stands between the braces, when it is kept as text.
    const std::string& getBody() const { return m_body; }
    void setBody(std::string body) { m_body = std::move(body); }

    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    ~SoUnknownNode() override;

private:
    SbName m_typeName;
    std::vector<std::unique_ptr<SoField>> m_fields;
    std::unique_ptr<SoFieldData> m_data;
    std::string m_body;
    bool m_declared = false;
};
