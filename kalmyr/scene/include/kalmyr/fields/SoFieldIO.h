#pragma once

#include <kalmyr/core/SoFieldIO.h>
