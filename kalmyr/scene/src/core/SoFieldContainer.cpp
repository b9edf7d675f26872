#include <kalmyr/core/SoFieldContainer.h>

#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoReadError.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoFieldIO.h>

#include "core/DeathObservers.h"
#include "core/FieldText.h"
#include "core/WalkMarks.h"
#include "fields/NodeHolding.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

SoType s_containerType;

using kalmyr::detail::WalkMarks;

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
    return kalmyr::holds(text, "a text") && set(SbString(text));
}

bool SoFieldContainer::set(const SbString& text)
{
    struct NewValue {
        SoField* field;
        std::unique_ptr<SoField> value;
        bool isIgnored;
    };
    // All values first, so that a fault leaves everything as it was.
    std::vector<NewValue> values;
    const auto readOne = [this, &values](SoFieldReader& in) {
        std::string_view word;
        if (!in.text.readWord(word) && !in.text.readName(word)) // fields from files may be numbers
            return in.text.fail("expected a field name");
        const std::size_t at = in.text.getOffset() - word.size();
        SoField* field = getField(SbName::find(word));
        if (!field)
            return in.text.failAt(at, std::string(getTypeId().getName().view()) + " has no field \""
                                          + std::string(word) + '"');
        std::unique_ptr<SoField> twin = field->createTwin();
        if (!twin)
            return in.text.failAt(at, "the type of \"" + std::string(word) + "\" has no text");
        if (!twin->readValue(in))
            return in.text.fail("expected a value");
        SbString why;
        if (!kalmyr::detail::mayTake(*field, *twin, why))
            return in.text.failAt(at, why.getString());
        const bool isIgnored = in.text.accept('~');
        values.push_back({field, std::move(twin), isIgnored});
        return true;
    };
    const auto read = [this, &values, &readOne](SoFieldReader& in) {
        values.clear();
        while (!in.text.atEnd()) {
            const bool isField = getField(SbName::find(in.text.peekWord()));
            if (!isField && !kalmyr::detail::readStatements(in))
                return false;
            if (!in.text.atEnd() && !readOne(in))
                return false;
        }
        return true;
    };
    kalmyr::detail::TextFault fault;
    if (!kalmyr::detail::readValueText(text, read, fault)) {
        SoReadError::post("", fault.line, fault.column, "%s", fault.message.c_str());
        return false;
    }
    for (const NewValue& one : values) {
        one.field->copyFrom(*one.value);
        if (one.isIgnored)
            one.field->setIgnored(true);
    }
    return true;
}

void SoFieldContainer::get(SbString& text) const
{
    text = SbString(kalmyr::detail::writeValueText([this](SoFieldWriter& out) {
        const SoFieldData* data = getFieldData();
        bool isFirst = true;
        for (int i = 0; data && i < data->getNumFields(); ++i) {
            const SoField* field = data->getField(this, i);
            const SoField::FieldType kind = field->getFieldType();
            if ((field->isDefault() && !field->isIgnored()) || kind == SoField::EVENT_IN
                || kind == SoField::EVENT_OUT)
                continue;
            if (!isFirst)
                out.text += ' ';
            isFirst = false;
            out.text += data->getFieldName(i).view();
            out.text += ' ';
            field->writeValue(out);
            if (field->isIgnored())
                out.text += " ~";
        }
    }));
}

void SoFieldContainer::copyFieldValues(const SoFieldContainer* from, bool copyConnections)
{
    if (!kalmyr::holds(from && from->getTypeId() == getTypeId(), "a container of the same type"))
        return;
    const SoFieldData* data = getFieldData();
    if (!data || from == this)
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
        WalkMarks::set(*this, WalkMarks::kToldOfSilence, false);
    m_notifyEnabled = on;
    if (on != was)
        SoNotification::repeatWalks(); // those that ended here meanwhile, or will end here now
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
    kalmyr::detail::endShortcuts(*this); // it has one more
    if (!isUnheard())
        return;
    const bool isWatched = field && field->getAuditors().getLength() > 0;
    // A field may be set without telling a holder that must hear everything and was never asked.
    const bool isUnknown = field && holder && !WalkMarks::has(*holder, WalkMarks::kAsked);
    const bool isHeard = holder && (!holder->isUnheard() || isUnknown);
    if (!isWatched && !isHeard)
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
        if (!WalkMarks::has(*this, WalkMarks::kToldOfSilence)
            && kalmyr::detail::tellObserversOfUnheardChange(this))
            WalkMarks::set(*this, WalkMarks::kToldOfSilence);
        return;
    }
    const SoNotification::Link link{this, notification.chain};
    notification.chain = &link;
    m_auditors.notify(notification);
    notification.chain = link.below;
}
