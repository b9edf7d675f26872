#include <kalmyr/core/SoCoreInit.h>

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoEngine.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>

#include "core/Threads.h"

void kalmyr::initCore()
{
    kalmyr::detail::initNotification();
    SoBase::initClass();
    SoPath::initClass();
    SoFieldContainer::initClass();
    SoNode::initClass();
    SoEngine::initClass();
    SoField::initClass();
    SoSField::initClass();
    SoMField::initClass();
}

void kalmyr::makeFieldTables()
{
    for (const SoType type : SoType::getAllDerivedFrom(SoNode::getClassTypeId()))
        SoRef<SoNode>(SoNode::create(type)).reset();
    for (const SoType type : SoType::getAllDerivedFrom(SoEngine::getClassTypeId()))
        SoRef<SoEngine>(SoEngine::create(type)).reset();
}
