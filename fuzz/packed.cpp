#include "ReadScene.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return fuzz::run("\x1f\x8b", data, size);
}
