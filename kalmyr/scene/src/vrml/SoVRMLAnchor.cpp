#include <kalmyr/vrml/SoVRMLAnchor.h>

#include "actions/FollowClicks.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/vrml/SoVRMLGeo.h>
#include <kalmyr/vrml/SoVRMLMacros.h>
#include <kalmyr/vrml/SoVRMLViewpoint.h>

#include <vector>

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
    const std::vector<SbString> urls(url.values().begin(), url.values().end());
    for (const SbString& one : urls)
        if ((s_fetch && s_fetch(one, s_fetchData, this)) || bindViewpoint(one.view()))
            return true;
    return false;
}

bool SoVRMLAnchor::bindViewpoint(std::string_view address) const
{
    if (!address.starts_with('#'))
        return false;
    const SbName name = SbName::find(address.substr(1));
    if (name.isEmpty())
        return false;
    for (const SoType type :
         {SoVRMLViewpoint::getClassTypeId(), SoVRMLGeoViewpoint::getClassTypeId()}) {
        for (SoBase* one : SoBase::getNamedBases(name, type)) {
            auto* viewpoint = static_cast<SoVRMLBindable*>(one);
            if (!viewpoint->isInWorldOf(this))
                continue;
            viewpoint->set_bind = true;
            return true;
        }
    }
    return false;
}
