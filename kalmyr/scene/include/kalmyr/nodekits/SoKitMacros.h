#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/nodekits/SoNodekitCatalog.h>

/// The class macros of node kits, used beside those of nodes.
///
///     class KALMYR_API SoLampKit : public SoBaseKit {
///         SO_KIT_HEADER(SoLampKit)
///     public:
///         SoLampKit();
///         static void initClass();
///         SoSFNode bulb;                       // each part is a field
///     };
///
///     SO_KIT_SOURCE(SoLampKit)
///     SoLampKit::SoLampKit()
///     {
///         SO_NODE_CONSTRUCTOR(SoBaseKit);
///         SO_KIT_PART(bulb);
///         SO_KIT_MAKE_PARTS();                 // last
///     }
///     void SoLampKit::initClass()
///     {
///         SO_KIT_INIT_CLASS(SoLampKit, SoBaseKit, "LampKit");
///         s_catalog->addPart("bulb", SoLight::getClassTypeId(), SoPointLight::getClassTypeId(),
///                            {"this", ""});
///     }
///
/// The field of a part has the part's name.

#define SO_KIT_HEADER(Class)                                                                       \
    SO_NODE_HEADER(Class)                                                                          \
public:                                                                                            \
    /** Parts of the class; null before its initClass(). */                                        \
    static const SoNodekitCatalog* getClassNodekitCatalog()                                        \
    {                                                                                              \
        return s_catalog;                                                                          \
    }                                                                                              \
    const SoNodekitCatalog* getNodekitCatalog() const override;                                    \
                                                                                                   \
private:                                                                                           \
    static SoNodekitCatalog* s_catalog;

#define SO_KIT_SOURCE(Class)                                                                       \
    SO_NODE_SOURCE(Class)                                                                          \
    SoNodekitCatalog* Class::s_catalog = nullptr;                                                  \
    const SoNodekitCatalog* Class::getNodekitCatalog() const                                       \
    {                                                                                              \
        return s_catalog;                                                                          \
    }

#define SO_KIT_PART(field) SO_ADD_EMPTY_FIELD(field)

#define SO_KIT_MAKE_PARTS() makeDefaultParts(*s_catalog)

/// Registers the type and begins its catalog with a copy of the parent's. Repeatable: the parts
/// that follow begin from the parent's again.
#define SO_KIT_INIT_CLASS(Class, Parent, name)                                                     \
    SO_NODE_INIT_CLASS(Class, Parent, name);                                                       \
    delete s_catalog;                                                                              \
    s_catalog = new SoNodekitCatalog(*Parent::getClassNodekitCatalog(), s_classTypeId)

#define SO_KIT_INIT_ABSTRACT_CLASS(Class, Parent, name)                                            \
    SO_NODE_INIT_ABSTRACT_CLASS(Class, Parent, name);                                              \
    delete s_catalog;                                                                              \
    s_catalog = new SoNodekitCatalog(*Parent::getClassNodekitCatalog(), s_classTypeId)
