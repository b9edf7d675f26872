#pragma once

#include <kalmyr/base/SbName.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoType.h>

/// \file
/// Class macros for concrete fields: type identity, nothing else. The source macro stands in a
/// source file, outside every namespace.

#define SO_FIELD_HEADER(Class)                                                                     \
public:                                                                                            \
    static SoType getClassTypeId();                                                                \
    static void initClass();                                                                       \
    SoType getTypeId() const override                                                              \
    {                                                                                              \
        return getClassTypeId();                                                                   \
    }

#define SO_FIELD_SOURCE(Class, Parent, name)                                                       \
    static SoType s_type##Class;                                                                   \
    SoType Class::getClassTypeId()                                                                 \
    {                                                                                              \
        return s_type##Class;                                                                      \
    }                                                                                              \
    void Class::initClass()                                                                        \
    {                                                                                              \
        s_type##Class = SoType::createType(Parent::getClassTypeId(), SbName(name), []() -> void* { \
            return static_cast<SoField*>(new Class);                                               \
        });                                                                                        \
    }

/// Assignment from a value, and of one field's value to another of its class.
#define SO_FIELD_ASSIGNMENT(Class, Parent)                                                         \
    using Parent::operator=;                                                                       \
    Class& operator=(const Class& other)                                                           \
    {                                                                                              \
        copyFrom(other);                                                                           \
        return *this;                                                                              \
    }
