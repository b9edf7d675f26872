#include "FieldsSupport.h"

namespace fieldtest {

SO_NODE_SOURCE(Holder)
SO_NODE_SOURCE(Bound)

Holder::Holder()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(size, (1.0f));
    SO_ADD_EMPTY_FIELD(part);
    SO_ADD_EMPTY_FIELD(parts);
}

void Holder::initClass()
{
    SO_NODE_INIT_CLASS(Holder, SoNode, "FieldTestHolder");
}

Bound::Bound()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_EMPTY_FIELD(children);
    children.bindTo(&m_list);
}

void Bound::initClass()
{
    SO_NODE_INIT_CLASS(Bound, SoNode, "FieldTestBound");
}

void initTypes()
{
    kalmyr::initCore();
    kalmyr::initFields();
    if (Holder::getClassTypeId().isBad()) {
        Holder::initClass();
        Bound::initClass();
    }
}

} // namespace fieldtest
