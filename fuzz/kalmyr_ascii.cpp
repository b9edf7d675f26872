#include "ReadScene.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return fuzz::run("#Kalmyr V1.0 ascii\n", data, size);
}
