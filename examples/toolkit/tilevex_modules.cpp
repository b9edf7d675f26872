// Starts an optional module by name, makes a node of it, and finishes it again.

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/tilevex/TvSymTool.h>

#include <cstdio>

int main()
{
    SoDB::init();
    for (const SbName& name : TvSymTool::getModuleNames())
        std::printf("%s: %s\n", name.getString(),
                    TvSymTool::isInitialized(name) ? "started"
                    : TvSymTool::isAvailable(name) ? "there"
                                                   : "not installed");

    const SbName animation("Animation");
    if (!TvSymTool::initModule(animation)) // counted: a second one needs a second finish
        return 0;
    {
        const SoRef<SoNode> rotor(SoNode::create(SoType::fromName(SbName("Rotor"))));
        SbString fields;
        if (rotor && rotor->set("speed 2"))
            rotor->get(fields);
        std::printf("a rotor with %s\n", fields.getString());
    }
    TvSymTool::finishModule(animation);
    std::puts(SoType::fromName(SbName("Rotor")).isBad() ? "its types are gone" : "still there");
    return 0;
}
