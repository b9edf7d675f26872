#include <kalmyr/core/SoFieldContainer.h>

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoFieldIO.h>

#include "core/DeathObservers.h"

namespace {

SoType s_containerType;

/// Bit of the node flags: observers know that this keeps changes to itself.
constexpr std::uint8_t kToldOfSilence = 0x80;

/// Switches a container's notification off for a scope.
class QuietScope {
public:
    explicit QuietScope(SoFieldContainer* container)
        : m_container(container), m_wasOn(container->enableNotify(false))
    {
    }
    ~QuietScope() { m_container->enableNotify(m_wasOn); }

private:
    SoFieldContainer* m_container;
    bool m_wasOn;
};

} // namespace

SoType SoFieldContainer::getClassTypeId()
{
    return s_containerType;
}

void SoFieldContainer::initClass()
{
    s_containerType = SoType::createType(SoBase::getClassTypeId(), SbName("FieldContainer"));
}

SoFieldContainer::SoFieldContainer() : m_changeId(SoNotification::nextStamp()) {}

SoField* SoFieldContainer::getField(const SbName& name) const
{
    const SoFieldData* data = getFieldData();
    const int index = data ? data->getIndex(name) : -1;
    return index < 0 ? nullptr : data->getField(this, index);
}

SbName SoFieldContainer::getFieldName(const SoField* field) const
{
    const SoFieldData* data = getFieldData();
    const int index = data ? data->getIndex(this, field) : -1;
    return index < 0 ? SbName::empty() : data->getFieldName(index);
}

std::vector<SoField*> SoFieldContainer::getFields() const
{
    std::vector<SoField*> fields;
    if (const SoFieldData* data = getFieldData())
        for (int i = 0; i < data->getNumFields(); ++i)
            fields.push_back(data->getField(this, i));
    return fields;
}

void SoFieldContainer::setToDefaults()
{
    SoFieldContainer* pristine = createTwin();
    if (!pristine)
        return;
    pristine->ref();
    {
        const QuietScope quiet(this);
        const SoFieldData* data = getFieldData();
        for (int i = 0; data && i < data->getNumFields(); ++i)
            data->getField(this, i)->resetTo(*data->getField(pristine, i));
    }
    pristine->unref();
    touch();
}

bool SoFieldContainer::hasDefaultValues() const
{
    for (const SoField* field : getFields())
        if (!field->isDefault())
            return false;
    return true;
}

bool SoFieldContainer::isFieldWritten(const SoField& field) const
{
    return !field.isDefault() || field.isIgnored() || field.isConnected();
}

bool SoFieldContainer::set(const char* text)
{
    SoTokenizer tokens(text, std::string_view(text).size());
    SoFieldReader reader(tokens);
    std::string_view word;
    while (!tokens.atEnd()) {
        if (!tokens.readWord(word))
            return tokens.fail("expected a field name");
        SoField* field = getField(SbName::find(word));
        if (!field) {
            SoDebugError::postWarning("SoFieldContainer::set", "%s has no field \"%s\"",
                                      getTypeId().getName().getString(), std::string(word).c_str());
            return false;
        }
        if (!field->readValue(reader)) {
            SoDebugError::postWarning("SoFieldContainer::set", "%s", tokens.getError().c_str());
            return false;
        }
        if (tokens.accept('~'))
            field->setIgnored(true);
    }
    return true;
}

void SoFieldContainer::get(SbString& text) const
{
    std::string result;
    SoFieldWriter writer(result);
    const SoFieldData* data = getFieldData();
    for (int i = 0; data && i < data->getNumFields(); ++i) {
        const SoField* field = data->getField(this, i);
        const SoField::FieldType kind = field->getFieldType();
        if (field->isDefault() || kind == SoField::EVENT_IN || kind == SoField::EVENT_OUT)
            continue;
        if (!result.empty())
            result += ' ';
        result += data->getFieldName(i).view();
        result += ' ';
        field->writeValue(writer);
        if (field->isIgnored())
            result += " ~";
    }
    text = SbString(result);
}

void SoFieldContainer::copyFieldValues(const SoFieldContainer* from, bool copyConnections)
{
    const SoFieldData* data = getFieldData();
    if (!data || from == this || from->getTypeId() != getTypeId())
        return;
    {
        const QuietScope quiet(this);
        for (int i = 0; i < data->getNumFields(); ++i) {
            SoField* to = data->getField(this, i);
            const SoField* source = data->getField(from, i);
            to->copyFrom(*source);
            to->setDefault(source->isDefault());
            to->setIgnored(source->isIgnored());
            if (copyConnections && source->isConnected())
                to->connectFrom(source->getConnectedField());
        }
    }
    touch();
}

void SoFieldContainer::destroy()
{
    // While all fields still exist: a last value is read, and an engine that goes with its last
    // follower tells others, this container perhaps among them.
    if (m_feeds) {
        const auto fields = getFields();
        for (SoField* field : fields)
            field->releaseFollowers();
        for (SoField* field : fields)
            if (field->m_extra)
                field->letGoOfMaster();
    }
    SoBase::destroy();
}

bool SoFieldContainer::enableNotify(bool on)
{
    const bool was = m_notifyEnabled;
    if (was && !on)
        m_nodeFlags = static_cast<std::uint8_t>(m_nodeFlags & ~kToldOfSilence);
    m_notifyEnabled = on;
    if (on && !was)
        SoNotification::repeatWalks(); // those that ended here meanwhile
    return was;
}

std::uint64_t SoFieldContainer::getChangeId() const
{
    SoNotification::repeatWalks();
    return m_changeId;
}

void SoFieldContainer::joinHolder(SoFieldContainer* holder, const SoField* field)
{
    if (holder)
        holder->m_holds = true;
    if (!isUnheard())
        return;
    const bool isWatched = field && field->getAuditors().getLength() > 0;
    if (!isWatched && (!holder || holder->isUnheard()))
        return;
    m_unheard = false;
    // Walks that begin below would end below.
    if (m_holds)
        SoNotification::repeatWalks();
}

void SoFieldContainer::touch()
{
    SoNotification notification;
    notification.container = this;
    notification.send(this);
}

void SoFieldContainer::notify(SoNotification& notification)
{
    notification.heard = true; // by whatever this is
    if (m_changeId == notification.stamp)
        return;
    m_changeId = notification.stamp;
    if (!m_notifyEnabled) {
        if (!(m_nodeFlags & kToldOfSilence) && kalmyr::detail::tellObserversOfUnheardChange(this))
            m_nodeFlags |= kToldOfSilence;
        return;
    }
    const SoNotification::Link link{this, notification.chain};
    notification.chain = &link;
    m_auditors.notify(notification);
    notification.chain = link.below;
}
