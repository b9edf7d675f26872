#include <kalmyr/nodekits/SoNodekitsInit.h>

#include <kalmyr/nodekits/SoAppearanceKit.h>
#include <kalmyr/nodekits/SoCameraKit.h>
#include <kalmyr/nodekits/SoInteractionKit.h>
#include <kalmyr/nodekits/SoLightKit.h>
#include <kalmyr/nodekits/SoNodeKitListPart.h>
#include <kalmyr/nodekits/SoSceneKit.h>
#include <kalmyr/nodekits/SoShapeKit.h>
#include <kalmyr/nodekits/SoWrapperKit.h>

#include <iterator>

namespace {

struct Class {
    void (*init)();
    SoType (*type)();
};

template <class Node>
constexpr Class entry()
{
    return {&Node::initClass, &Node::getClassTypeId};
}

/// Parents first; a list item's type before the catalogs that name it.
constexpr Class kClasses[] = {
    entry<SoNodeKitListPart>(), entry<SoBaseKit>(),    entry<SoAppearanceKit>(),
    entry<SoCameraKit>(),       entry<SoLightKit>(),   entry<SoSeparatorKit>(),
    entry<SoShapeKit>(),        entry<SoWrapperKit>(), entry<SoSceneKit>(),
    entry<SoInteractionKit>(),
};

} // namespace

void kalmyr::initNodekits()
{
    for (const Class& one : kClasses)
        one.init();
}

void kalmyr::finishNodekits()
{
    for (auto one = std::rbegin(kClasses); one != std::rend(kClasses); ++one)
        SoType::removeType(one->type());
}
