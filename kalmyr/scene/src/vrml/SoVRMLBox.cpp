#include <kalmyr/vrml/SoVRMLBox.h>

#include "Bodies.h"

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLBox)

SoVRMLBox::SoVRMLBox()
{
    SO_NODE_CONSTRUCTOR(SoVRMLGeometry);
    SO_VRML_FIELD(size, (2.0f, 2.0f, 2.0f));
}

SoVRMLBox::~SoVRMLBox() = default;

void SoVRMLBox::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLBox, SoVRMLGeometry, "VRMLBox");
}

kalmyr::detail::SharedKey SoVRMLBox::getKey() const
{
    using namespace kalmyr::detail;
    return bodyKey(SharedKey::CUBE, size.getValue());
}

SoRef<SoGeometry> SoVRMLBox::findShared(SoState*)
{
    return kalmyr::detail::sharedBody(getKey(), true);
}

void SoVRMLBox::buildGeometry(SoState*, SoGeometry& geometry)
{
    kalmyr::detail::buildBody(getKey(), geometry);
}
