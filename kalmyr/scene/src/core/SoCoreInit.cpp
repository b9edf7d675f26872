#include <kalmyr/core/SoCoreInit.h>

#include <kalmyr/core/SoEngine.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>

void kalmyr::initCore()
{
    SoBase::initClass();
    SoPath::initClass();
    SoFieldContainer::initClass();
    SoNode::initClass();
    SoEngine::initClass();
    SoField::initClass();
    SoSField::initClass();
    SoMField::initClass();
}
