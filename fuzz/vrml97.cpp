#include "ReadScene.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return fuzz::run("#VRML V2.0 utf8\n", data, size);
}
