#pragma once

#include <kalmyr/core/SoEngine.h>
#include <kalmyr/core/SoNodeMacros.h>

/// \file
/// Class macros of engines. They are those of nodes, and two of their own:
///
///     class KALMYR_API SoCounter final : public SoEngine {
///         SO_ENGINE_HEADER(SoCounter)
///     public:
///         SoCounter();
///         static void initClass();
///         SoSFShort max;        // inputs
///         SoSFShort output;     // outputs
///     };
///
///     SO_ENGINE_SOURCE(SoCounter)
///     SoCounter::SoCounter() { SO_ENGINE_CONSTRUCTOR(SoEngine); SO_ADD_FIELD(max, (1));
///                              SO_ADD_OUTPUT(output); }
///     void SoCounter::initClass() { SO_ENGINE_INIT_CLASS(SoCounter, SoEngine, "Counter"); }

#define SO_ENGINE_HEADER(Class) SO_NODE_HEADER(Class)
#define SO_ENGINE_SOURCE(Class) SO_NODE_SOURCE(Class)
#define SO_ENGINE_CONSTRUCTOR(Parent) SO_NODE_CONSTRUCTOR(Parent)

/// Declares an output, which begins with its type's own default and out of date.
#define SO_ADD_OUTPUT(field)                                                                       \
    SO_ADD_EMPTY_FIELD(field);                                                                     \
    initOutput(&(field))

#define SO_ENGINE_INIT_CLASS(Class, Parent, name)                                                  \
    s_classTypeId = SoType::createType(Parent::getClassTypeId(), SbName(name), []() -> void* {     \
        return static_cast<SoEngine*>(new Class);                                                  \
    })

#define SO_ENGINE_INIT_ABSTRACT_CLASS(Class, Parent, name)                                         \
    SO_NODE_INIT_ABSTRACT_CLASS(Class, Parent, name)
