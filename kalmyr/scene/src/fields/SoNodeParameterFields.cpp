#include <kalmyr/fields/SoMFInstanceParameter.h>
#include <kalmyr/fields/SoMFUniformShaderParameter.h>

SO_FIELD_SOURCE(SoMFUniformShaderParameter, SoMFNode, "MFUniformShaderParameter")
SO_FIELD_SOURCE(SoMFInstanceParameter, SoMFNode, "MFInstanceParameter")
