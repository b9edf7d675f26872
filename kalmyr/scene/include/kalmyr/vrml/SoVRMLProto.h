#pragma once

#include <kalmyr/base/SbString.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/base/SoRefCounter.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoDeclaredFields.h>

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A prototype as a file declares it: its interface, and its body as text.
///
/// The body is read once for each instance. Prototypes that it uses are found from getPrevious()
/// on.
class KALMYR_API SoVRMLProto final : public SoRefCounter {
public:
    /// A field or an event of the interface.
    struct Entry {
        SoField::FieldType kind;
        SbName type;
        SbName name;
        std::size_t valueAt = 0; ///< where its default value stands in the text; 0 without one
    };
    static constexpr std::size_t kNoBody = static_cast<std::size_t>(-1);

    SbName name;
    std::string text; ///< from the bracket that opens the interface to the last of the declaration
    std::vector<Entry> interface;
    std::size_t fileAt = 0;       ///< where the text stands in its file
    std::size_t bodyAt = kNoBody; ///< behind the brace that opens the body
    bool checked = false;         ///< the body was read: for an instance, or to see what is wrong
    bool external = false;        ///< the body stands in another file, one of `urls`
    std::size_t urlsAt = 0;       ///< where they stand in the text
    std::vector<SbString> urls;
    SoType builtIn;  ///< what a urn of them names, whose nodes the instances are; or bad
    SbString folder; ///< that relative urls start from
    SoRef<SoVRMLProto> resolved; ///< the declaration in the other file, once it was found
    bool resolving = false;      ///< it is being looked for, or was not found

    /// Makes this the one that is declared behind `previous`, which may be null. Once, with the
    /// name set.
    void declareBehind(const SoRef<SoVRMLProto>& previous);
    /// The one declared before this one where this one is known.
    SoVRMLProto* getPrevious() const { return m_previous.get(); }
    /// The latest of that name among this one and those declared before it; null when there is
    /// none. Takes a look-up for each level of prototypes in prototypes, however many there are.
    const SoVRMLProto* find(const SbName& wanted) const;
    SoVRMLProto* find(const SbName& wanted)
    {
        return const_cast<SoVRMLProto*>(std::as_const(*this).find(wanted));
    }

    /// Nodes that are made of it at present. Declarations behind it hold it as well.
    int getNumInstances() const { return m_numInstances; }

protected:
    ~SoVRMLProto() override;

private:
    friend class SoVRMLProtoInstance;
    struct Scope;
    SoRef<SoVRMLProto> m_previous;
    std::shared_ptr<Scope> m_scope;
    std::atomic<int> m_numInstances = 0;
    std::size_t m_number = 0; ///< among those of the scope, from 1
};

/// A node that a prototype describes: the fields of the interface, and nodes of its own that are
/// made of the body.
///
/// It stands for the first of these nodes wherever it is used.
class KALMYR_API SoVRMLProtoInstance : public SoNode {
public:
    SoVRMLProtoInstance();
    static void initClass();
    static SoType getClassTypeId();
    SoType getTypeId() const override { return getClassTypeId(); }
    const SoFieldData* getFieldData() const override { return m_declared.getData(); }

    /// The prototype; null for an instance that was made by itself.
    SoVRMLProto* getProto() const { return m_proto.get(); }
    /// Declares the fields of the prototype's interface. Once, before any of them is set.
    void setProto(SoVRMLProto* proto);

    SoDeclaredFields& getDeclared() { return m_declared; }
    const SoDeclaredFields& getDeclared() const { return m_declared; }

    /// The nodes of the body.
    SoChildList& getParts() const { return m_parts; }
    SoChildList* getInternalChildren() const override { return &m_parts; }

    /// For readers: fields of the body take the value of this one of the interface.
    void notePassedOn(const SoField& field);
    /// Whether the nodes that a field of the interface holds stand in the body as well. Searches
    /// for everything look at them there.
    bool isPassedOn(const SoField& field) const;

    /// The node that `node` stands for: itself unless it is an instance; null for an empty one.
    static SoNode* resolve(SoNode* node);

    bool affectsState() const override;
    void doAction(SoAction* action) override;
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    ~SoVRMLProtoInstance() override;

private:
    void holdProto(SoVRMLProto* proto);

    SoRef<SoVRMLProto> m_proto;
    SoDeclaredFields m_declared;
    mutable SoChildList m_parts;
    std::vector<int> m_passedOn; ///< indices of fields
};
