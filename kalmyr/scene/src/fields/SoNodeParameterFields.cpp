#include <kalmyr/fields/SoMFInstanceParameter.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoMFUniformShaderParameter.h>

SO_FIELD_SOURCE(SoMFNode, SoMNodeField, "MFNode")
SO_FIELD_SOURCE(SoMFUniformShaderParameter, SoMNodeField, "MFUniformShaderParameter")
SO_FIELD_SOURCE(SoMFInstanceParameter, SoMNodeField, "MFInstanceParameter")
