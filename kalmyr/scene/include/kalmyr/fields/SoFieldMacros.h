#pragma once

/// Class macros for concrete fields: type identity, nothing else.
#define SO_FIELD_HEADER(Class)                                                                     \
public:                                                                                            \
    static SoType getClassTypeId();                                                                \
    static void initClass();                                                                       \
    SoType getTypeId() const override { return getClassTypeId(); }

#define SO_FIELD_SOURCE(Class, Parent, name)                                                       \
    static SoType s_type##Class;                                                                   \
    SoType Class::getClassTypeId() { return s_type##Class; }                                       \
    void Class::initClass()                                                                        \
    {                                                                                              \
        s_type##Class =                                                                            \
            SoType::createType(Parent::getClassTypeId(), SbName(name),                             \
                               []() -> void * { return static_cast<SoField *>(new Class); });      \
    }
