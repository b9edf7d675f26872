#pragma once

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoNodeMacros.h>

/// Fields of VRML97 nodes with the part that they play there. To be used in constructors, after
/// SO_NODE_CONSTRUCTOR.

#define SO_VRML_FIELD(field, defaultValue) SO_ADD_FIELD(field, defaultValue)
#define SO_VRML_EMPTY_FIELD(field) SO_ADD_EMPTY_FIELD(field)

#define SO_VRML_EXPOSED(field, defaultValue)                                                       \
    SO_ADD_FIELD(field, defaultValue);                                                             \
    (field).setFieldType(SoField::EXPOSED)
#define SO_VRML_EXPOSED_EMPTY(field)                                                               \
    SO_ADD_EMPTY_FIELD(field);                                                                     \
    (field).setFieldType(SoField::EXPOSED)

#define SO_VRML_EVENT_IN(field)                                                                    \
    SO_ADD_EMPTY_FIELD(field);                                                                     \
    (field).setFieldType(SoField::EVENT_IN)
#define SO_VRML_EVENT_OUT(field)                                                                   \
    SO_ADD_EMPTY_FIELD(field);                                                                     \
    (field).setFieldType(SoField::EVENT_OUT)
