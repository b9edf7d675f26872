// A program that links the scene library only: reads a scene from memory.

#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoSeparator.h>

#include <cstdio>
#include <string_view>

int main()
{
    constexpr std::string_view kScene = "#VRML V1.0 ascii\nSeparator { Material {} Cube {} }\n";

    SoDB::init();
    SoInput input;
    if (!input.setBuffer(kScene.data(), kScene.size()))
        return 1;
    SoSeparator* root = SoDB::readAll(&input);
    if (!root)
        return 1;
    root->ref();
    const int children = root->getNumChildren();
    root->unref();
    SoDB::finish();
    std::printf("consumer: %d children\n", children);
    return children == 2 ? 0 : 1;
}
