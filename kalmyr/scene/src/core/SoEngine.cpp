#include <kalmyr/core/SoEngine.h>

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/fields/SoSFTrigger.h>

namespace {

SoType s_engineType;

} // namespace

SoType SoEngine::getClassTypeId()
{
    return s_engineType;
}

void SoEngine::initClass()
{
    s_engineType = SoType::createType(SoFieldContainer::getClassTypeId(), SbName("Engine"));
}

SoEngine::~SoEngine()
{
    SoNotification::forget(this);
}

void SoEngine::initOutput(SoField* field)
{
    field->setFieldType(SoField::EVENT_OUT);
    field->changeFlags(0, SoField::kDirty);
}

bool SoEngine::computes(const SoField* field) const
{
    return field->getFieldType() == SoField::EVENT_OUT;
}

std::vector<SoField*> SoEngine::getOutputs() const
{
    std::vector<SoField*> outputs = getFields();
    std::erase_if(outputs, [this](const SoField* field) { return !computes(field); });
    return outputs;
}

SoField* SoEngine::getOutput(const SbName& name) const
{
    SoField* field = getField(name);
    return field && computes(field) ? field : nullptr;
}

SbName SoEngine::getOutputName(const SoField* output) const
{
    return computes(output) ? getFieldName(output) : SbName::empty();
}

SoEngine* SoEngine::create(SoType type)
{
    if (!type.isDerivedFrom(getClassTypeId()))
        return nullptr;
    return static_cast<SoEngine*>(type.createInstance());
}

SoEngine* SoEngine::getDriver(const SoField* field)
{
    const SoField* master = field->getConnectedField();
    SoFieldContainer* container = master ? master->getContainer() : nullptr;
    return container && container->isOfType(getClassTypeId()) ? static_cast<SoEngine*>(container)
                                                              : nullptr;
}

SoEngine* SoEngine::getByName(const SbName& name)
{
    return static_cast<SoEngine*>(getNamedBase(name, getClassTypeId()));
}

SoFieldContainer* SoEngine::createTwin() const
{
    return create(getTypeId());
}

SoEngine* SoEngine::copy() const
{
    auto* twin = static_cast<SoEngine*>(createTwin());
    if (!twin)
        return nullptr;
    twin->ref(); // what is connected on the way must not take the only reference with it
    twin->copyFieldValues(this, true);
    twin->setName(getName());
    twin->unrefNoDelete();
    return twin;
}

void SoEngine::copyFieldValues(const SoFieldContainer* from, bool copyConnections)
{
    const SoFieldData* data = getFieldData();
    if (!data || from == this || from->getTypeId() != getTypeId()
        || from->getFieldData()->getNumFields() != data->getNumFields())
        return;
    for (int i = 0; i < data->getNumFields(); ++i) {
        SoField* to = data->getField(this, i);
        const SoField* source = from->getFieldData()->getField(from, i);
        if (computes(to) || to->getTypeId() != source->getTypeId()
            || to->isOfType(SoSFTrigger::getClassTypeId()))
            continue; // copying a trigger would set it off
        if (!source->isDefault())
            to->copyFrom(*source);
        to->setDefault(source->isDefault());
        to->setIgnored(source->isIgnored());
        if (copyConnections && source->isConnected())
            to->connectFrom(source->getConnectedField());
    }
}

void SoEngine::notify(SoNotification& notification)
{
    SoField* field = notification.container == this ? notification.field : nullptr;
    if (field && computes(field)) {
        SoFieldContainer::notify(notification);
        return;
    }
    if (isReacting()) {
        SoNotification::defer(this, field);
        SoFieldContainer::notify(notification);
        return;
    }
    SoFieldContainer::notify(notification);
    if (m_toldOf != notification.origin) // else another input brought the same change
        tellOutputs(notification.origin);
}

void SoEngine::tellOutputs(std::uint64_t origin)
{
    m_toldOf = origin;
    const SoFieldData* data = getFieldData();
    for (int i = 0; data && i < data->getNumFields(); ++i)
        if (SoField* field = data->getField(this, i); computes(field))
            field->becomeStale(origin);
}

void SoEngine::outputsChanged()
{
    SoNotification().sendOutputs(this);
}

void SoEngine::compute(SoField*)
{
    const std::vector<SoField*> outputs = getOutputs();
    for (SoField* output : outputs)
        output->changeFlags(0, SoField::kPulling);
    evaluate();
    for (SoField* output : outputs)
        output->changeFlags(SoField::kPulling | SoField::kDirty, 0);
}
