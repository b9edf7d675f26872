#include <kalmyr/core/SoField.h>

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoReadError.h>
#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/core/SoFieldIO.h>

#include <string>

namespace {

SoType s_fieldType;
SoType s_singleType;
SoType s_multipleType;

} // namespace

/// What few fields have: listeners of their own and a connection.
struct SoField::Extra {
    SoAuditorList auditors;
    SoField* master = nullptr; // Not owned; it tells us when it dies.
};

SoType SoField::getClassTypeId()
{
    return s_fieldType;
}

void SoField::initClass()
{
    s_fieldType = SoType::createType(SoType::badType(), SbName("Field"));
}

SoType SoSField::getClassTypeId()
{
    return s_singleType;
}

void SoSField::initClass()
{
    s_singleType = SoType::createType(SoField::getClassTypeId(), SbName("SField"));
}

SoType SoMField::getClassTypeId()
{
    return s_multipleType;
}

void SoMField::initClass()
{
    s_multipleType = SoType::createType(SoField::getClassTypeId(), SbName("MField"));
}

SoField::~SoField()
{
    if (!m_extra)
        return;
    if (m_extra->master)
        m_extra->master->removeAuditor(this);
    m_extra->auditors.announceDeath();
    delete m_extra;
}

SoField::Extra& SoField::extra()
{
    if (!m_extra)
        m_extra = new Extra;
    return *m_extra;
}

void SoField::setDefault(bool on)
{
    m_flags = on ? m_flags | kDefault : m_flags & ~kDefault;
}

void SoField::setIgnored(bool on)
{
    if (on == isIgnored())
        return;
    m_flags = on ? m_flags | kIgnored : m_flags & ~kIgnored;
    valueChanged(false);
}

void SoField::setFieldType(FieldType type)
{
    m_flags = (m_flags & ~(7u << kTypeShift)) | (static_cast<std::uint32_t>(type) << kTypeShift);
}

void SoField::get(SbString& text) const
{
    std::string result;
    SoFieldWriter writer(result);
    evaluate();
    writeValue(writer);
    text = SbString(result);
}

bool SoField::set(const char* text)
{
    // Into a twin first, so that a fault leaves this value as it was.
    const std::unique_ptr<SoField> twin(static_cast<SoField*>(getTypeId().createInstance()));
    SoTokenizer tokens(text, std::string_view(text).size());
    SoFieldReader reader(tokens);
    SoField* target = twin ? twin.get() : this;
    if (twin)
        prepareTwin(*twin);
    if (!target->readValue(reader)
        || (!tokens.atEnd() && !tokens.fail("expected the end of the value"))) {
        SoReadError::post("", tokens.getErrorLine(), tokens.getErrorColumn(), "%s",
                          tokens.getError().c_str());
        return false;
    }
    if (twin)
        copyFrom(*twin);
    return true;
}

void SoField::copyWith(SoNodeCopier&, const SoField& other)
{
    copyFrom(other);
}

void SoField::resetTo(const SoField& pristine)
{
    copyFrom(pristine);
    setDefault(pristine.isDefault());
    setIgnored(false);
}

void SoField::valueChanged(bool clearDefault)
{
    if (clearDefault)
        m_flags &= ~kDefault;
    if (m_flags & kPulling)
        return; // told when the master changed
    SoNotification notification;
    notifyChange(notification);
}

void SoField::notifyChange(SoNotification& notification)
{
    const bool heard = m_extra && m_extra->auditors.getLength() > 0;
    if (!m_container && !heard)
        return;
    if (m_container && !m_container->isNotifyEnabled() && !heard) {
        notification.stamp = SoNotification::nextStamp();
        m_container->notify(notification); // only moves the change id on
        return;
    }
    notification.container = m_container;
    notification.field = this;
    notification.sendFrom(this);
}

void SoField::pass(SoNotification& notification)
{
    if (m_extra)
        m_extra->auditors.notify(notification);
    if (m_container)
        m_container->notify(notification);
}

void SoField::auditedChanged(SoNotification& notification)
{
    if (m_extra && m_extra->master) {
        if (m_flags & kDirty)
            return; // whoever listens knows already
        m_flags |= kDirty;
        m_flags &= ~kDefault;
        SoNotification own = notification;
        own.container = m_container;
        own.field = this;
        own.child = nullptr;
        own.kind = SoNotification::UNSPECIFIED;
        own.chain = nullptr;
        pass(own);
        return;
    }
    pass(notification);
}

void SoField::auditedDying()
{
    // The master's value is gone already: the one last read stays.
    if (m_extra)
        m_extra->master = nullptr;
    m_flags &= ~kDirty;
}

bool SoField::connectFrom(SoField* master)
{
    if (!master || master == this || master->getTypeId() != getTypeId()) {
        SoDebugError::post("SoField::connectFrom", "a %s cannot follow %s",
                           getTypeId().getName().getString(),
                           master == this ? "itself"
                           : master       ? master->getTypeId().getName().getString()
                                          : "nothing");
        return false;
    }
    for (const SoField* at = master; at; at = at->getConnectedField())
        if (at == this) {
            SoDebugError::post("SoField::connectFrom", "the connection would close a cycle");
            return false;
        }
    disconnect();
    extra().master = master;
    master->addAuditor(this, SoAuditor::FIELD);
    m_flags |= kDirty;
    valueChanged();
    return true;
}

void SoField::disconnect()
{
    if (!isConnected())
        return;
    evaluate();
    m_extra->master->removeAuditor(this);
    m_extra->master = nullptr;
    valueChanged(false);
}

bool SoField::isConnected() const
{
    return m_extra && m_extra->master;
}

SoField* SoField::getConnectedField() const
{
    return m_extra ? m_extra->master : nullptr;
}

void SoField::pull() const
{
    // Logically constant: the value is what the connection says it is.
    auto* self = const_cast<SoField*>(this);
    self->m_flags &= ~kDirty;
    if (!isConnected())
        return;
    m_extra->master->evaluate();
    self->m_flags |= kPulling;
    self->copyFrom(*m_extra->master);
    self->m_flags &= ~kPulling;
}

void SoField::addAuditor(SoAuditor* auditor, SoAuditor::Type type)
{
    extra().auditors.append(auditor, type);
}

void SoField::removeAuditor(SoAuditor* auditor)
{
    if (m_extra)
        m_extra->auditors.remove(auditor);
}

const SoAuditorList& SoField::getAuditors() const
{
    static const SoAuditorList none;
    return m_extra ? m_extra->auditors : none;
}

void SoMField::get1(int index, SbString& text) const
{
    std::string result;
    SoFieldWriter writer(result);
    if (index >= 0 && index < getNum())
        write1Value(index, writer);
    text = SbString(result);
}

bool SoMField::set1(int index, const char* text)
{
    SoTokenizer tokens(text, std::string_view(text).size());
    SoFieldReader reader(tokens);
    if (index >= 0 && read1Value(index, reader))
        return true;
    SoReadError::post("", tokens.getErrorLine(), tokens.getErrorColumn(), "%s",
                      tokens.getError().c_str());
    return false;
}

bool SoMField::readValue(SoFieldReader& in)
{
    if (in.text.accept('['))
        return readList(in);
    setNum(0);
    return read1Value(0, in);
}

void SoMField::writeValue(SoFieldWriter& out) const
{
    const int num = getNum();
    if (num == 1) {
        write1Value(0, out);
        return;
    }
    out.text += '[';
    for (int i = 0; i < num; ++i) {
        if (i > 0)
            out.text += ',';
        out.breakLine();
        write1Value(i, out);
        out.flushIfLarge();
    }
    out.text += " ]";
}
