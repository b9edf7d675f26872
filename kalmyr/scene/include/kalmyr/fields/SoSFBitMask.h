#pragma once

#include <kalmyr/fields/SoSFEnum.h>
