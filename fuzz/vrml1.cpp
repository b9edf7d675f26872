#include "ReadScene.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return fuzz::run("#VRML V1.0 ascii\n", data, size);
}
