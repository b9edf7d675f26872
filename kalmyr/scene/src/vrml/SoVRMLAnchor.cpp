#include <kalmyr/vrml/SoVRMLAnchor.h>

#include "actions/FollowClicks.h"

#include <kalmyr/vrml/SoVRMLMacros.h>

namespace {

SoVRMLAnchor::FetchURLCallBack* s_fetch = nullptr;
void* s_fetchData = nullptr;

} // namespace

SO_NODE_SOURCE(SoVRMLAnchor)

SoVRMLAnchor::SoVRMLAnchor()
{
    SO_NODE_CONSTRUCTOR(SoVRMLParent);
    SO_VRML_EXPOSED_EMPTY(description);
    SO_VRML_EXPOSED_EMPTY(parameter);
    SO_VRML_EXPOSED_EMPTY(url);
}

SoVRMLAnchor::~SoVRMLAnchor() = default;

void SoVRMLAnchor::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLAnchor, SoVRMLParent, "VRMLAnchor");
    kalmyr::detail::followClicks<SoVRMLAnchor>();
}

void SoVRMLAnchor::setFetchURLCallBack(FetchURLCallBack* callback, void* data)
{
    s_fetch = callback;
    s_fetchData = data;
}

bool SoVRMLAnchor::follow()
{
    const SoRef<SoVRMLAnchor> self(this); // the callback may load another scene
    if (!s_fetch)
        return false;
    for (int i = 0; i < url.getNum(); ++i)
        if (s_fetch(SbString(url[i]), s_fetchData, this))
            return true;
    return false;
}
