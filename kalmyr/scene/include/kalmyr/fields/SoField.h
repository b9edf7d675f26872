#pragma once

#include <kalmyr/core/SoField.h>
