#pragma once

#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoType.h>

/// The class macros of the toolkit. They write what every typed class needs and nothing else.
///
/// A concrete node class:
///
///     class KALMYR_API SoCube : public SoShape {
///         SO_NODE_HEADER(SoCube)
///     public:
///         SoCube();
///         SoSFFloat width;
///         static void initClass();          // registers the type and the actions' methods
///     };
///
///     SO_NODE_SOURCE(SoCube)
///     SoCube::SoCube() { SO_NODE_CONSTRUCTOR(SoShape); SO_ADD_FIELD(width, (2.0f)); }
///     void SoCube::initClass() { SO_NODE_INIT_CLASS(SoCube, SoShape, "Cube"); }
///
/// An abstract class uses SO_NODE_INIT_ABSTRACT_CLASS; everything else is the same.
/// The order of SO_ADD_FIELD is the order of the field data. The first instance fills the table
/// of its class, which begins with a copy of its parent's.

#define SO_NODE_HEADER(Class)                                                                      \
public:                                                                                            \
    static SoType getClassTypeId()                                                                 \
    {                                                                                              \
        return s_classTypeId;                                                                      \
    }                                                                                              \
    SoType getTypeId() const override                                                              \
    {                                                                                              \
        return s_classTypeId;                                                                      \
    }                                                                                              \
    const SoFieldData* getFieldData() const override;                                              \
    /** Field table of the class; null until the first instance exists. */                         \
    static const SoFieldData* getClassFieldData()                                                  \
    {                                                                                              \
        return s_classFieldData;                                                                   \
    }                                                                                              \
                                                                                                   \
private:                                                                                           \
    static SoType s_classTypeId;                                                                   \
    static SoFieldData* s_classFieldData;

#define SO_NODE_SOURCE(Class)                                                                      \
    SoType Class::s_classTypeId;                                                                   \
    SoFieldData* Class::s_classFieldData = nullptr;                                                \
    const SoFieldData* Class::getFieldData() const                                                 \
    {                                                                                              \
        return s_classFieldData;                                                                   \
    }

/// First statement of a constructor. `Parent` is the parent class of the node's own class.
#define SO_NODE_CONSTRUCTOR(Parent)                                                                \
    SoFieldData* soFirstInstance = nullptr;                                                        \
    if (!s_classFieldData) {                                                                       \
        const SoFieldData* soInherited = Parent::getFieldData();                                   \
        soFirstInstance = soInherited ? new SoFieldData(*soInherited) : new SoFieldData;           \
        s_classFieldData = soFirstInstance;                                                        \
    }                                                                                              \
    static_cast<void>(soFirstInstance)

/// Declares a field with its default value, given in parentheses as setValue() takes it.
#define SO_ADD_FIELD(field, defaultValue)                                                          \
    (field).setContainer(this);                                                                    \
    (field).initValue defaultValue;                                                                \
    if (soFirstInstance)                                                                           \
    soFirstInstance->addField(this, SbName(#field), &(field))

/// A multiple-value field without values, or a field whose default is its type's own.
#define SO_ADD_EMPTY_FIELD(field)                                                                  \
    (field).setContainer(this);                                                                    \
    if (soFirstInstance)                                                                           \
    soFirstInstance->addField(this, SbName(#field), &(field))

#define SO_NODE_INIT_CLASS(Class, Parent, name)                                                    \
    s_classTypeId = SoType::createType(Parent::getClassTypeId(), SbName(name),                     \
                                       []() -> void* { return static_cast<SoNode*>(new Class); })

#define SO_NODE_INIT_ABSTRACT_CLASS(Class, Parent, name)                                           \
    s_classTypeId = SoType::createType(Parent::getClassTypeId(), SbName(name))
