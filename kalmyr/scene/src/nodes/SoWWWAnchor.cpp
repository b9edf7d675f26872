#include <kalmyr/nodes/SoWWWAnchor.h>

#include "actions/FollowClicks.h"

namespace {

constexpr SoEnumEntry kMaps[] = {{"NONE", SoWWWAnchor::NONE}, {"POINT", SoWWWAnchor::POINT}};

SoWWWAnchor::FetchURLCallBack* s_fetch = nullptr;
void* s_fetchData = nullptr;

} // namespace

SO_NODE_SOURCE(SoWWWAnchor)

SoWWWAnchor::SoWWWAnchor()
{
    SO_NODE_CONSTRUCTOR(SoSeparator);
    SO_ADD_FIELD(name, (""));
    SO_ADD_FIELD(description, (""));
    SO_ADD_FIELD(map, (NONE));
    map.setEnums(kMaps);
}

SoWWWAnchor::~SoWWWAnchor() = default;

void SoWWWAnchor::initClass()
{
    SO_NODE_INIT_CLASS(SoWWWAnchor, SoSeparator, "WWWAnchor");
    kalmyr::detail::followClicks<SoWWWAnchor>();
}

void SoWWWAnchor::setFetchURLCallBack(FetchURLCallBack* callback, void* data)
{
    s_fetch = callback;
    s_fetchData = data;
}

bool SoWWWAnchor::follow()
{
    if (s_fetch)
        s_fetch(name.getValue(), s_fetchData, this);
    return s_fetch != nullptr;
}
