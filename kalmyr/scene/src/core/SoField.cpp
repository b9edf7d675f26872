#include <kalmyr/core/SoField.h>

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoReadError.h>
#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/core/SoFieldIO.h>

#include "core/CacheLock.h"
#include "core/Threads.h"
#include "core/WalkStack.h"
#include "SoFieldExtra.h"

#include <optional>
#include <string>

namespace {

SoType s_fieldType;
SoType s_singleType;
SoType s_multipleType;

} // namespace

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

void SoField::dismantle()
{
    if (flags() & kDeferred)
        SoNotification::forget(this);
    if (!m_extra)
        return;
    letGoOfMaster();
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
    changeFlags(kDefault, on ? kDefault : 0);
}

void SoField::setIgnored(bool on)
{
    if (on == isIgnored())
        return;
    changeFlags(kIgnored, on ? kIgnored : 0);
    valueChanged(false);
}

void SoField::setFieldType(FieldType type)
{
    changeFlags(7u << kTypeShift, static_cast<std::uint32_t>(type) << kTypeShift);
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

bool SoField::enableNotify(bool on)
{
    const bool was = isNotifyEnabled();
    changeFlags(kQuiet, on ? 0 : kQuiet);
    return was;
}

void SoField::valueChanged(bool clearDefault)
{
    if (flags() & kPulling) {
        if (clearDefault)
            changeFlags(kDefault, 0);
        return; // told when the master changed; other threads wait until all of it is there
    }
    if (clearDefault)
        changeFlags(kDefault | kDirty, 0); // a value that was set stays until the master changes
    if (flags() & kQuiet)
        return;
    SoNotification notification;
    notifyChange(notification);
}

void SoField::notifyChange(SoNotification& notification)
{
    const bool heard = m_extra && m_extra->auditors.getLength() > 0;
    if (!m_container && !heard)
        return;
    notification.container = m_container;
    notification.field = this;
    if (m_container && !m_container->isNotifyEnabled() && !heard) {
        notification.stamp = SoNotification::nextStamp();
        m_container->notify(notification); // only moves the change id on
        return;
    }
    notification.sendFrom(this);
}

void SoField::pass(SoNotification& notification)
{
    if (m_extra) {
        m_extra->auditors.notify(notification);
        notification.heard = notification.heard || m_extra->auditors.getLength() > 0;
    }
    if (m_container)
        m_container->notify(notification);
}

void SoField::auditedChanged(SoNotification& notification)
{
    if (!isConnected() || notification.field != m_extra->master) {
        kalmyr::detail::passUp(notification, [&] { pass(notification); }); // held by the field
        return;
    }
    if (notification.keepsValue || (flags() & kConnectionOff))
        return;
    changeFlags(0, kDirty);
    if (flags() & (kDeferred | kQuiet))
        return;
    changeFlags(0, kDeferred);
    SoNotification::defer(this, notification.origin);
}

void SoField::becomeStale(std::uint64_t origin)
{
    changeFlags(0, kDirty);
    if (!m_extra || (flags() & kQuiet))
        return;
    SoNotification own;
    own.container = m_container;
    own.field = this;
    own.stamp = own.origin = origin;
    m_extra->auditors.notify(own);
}

void SoField::tellFollowing(std::uint64_t origin)
{
    changeFlags(kDeferred, 0);
    SoNotification own;
    own.container = m_container;
    own.field = this;
    own.stamp = SoNotification::nextStamp();
    own.origin = origin;
    pass(own);
}

void SoField::auditedDying()
{
    // The master's value is gone already: the one last read stays.
    if (m_extra)
        m_extra->master = nullptr;
    changeFlags(kDirty, 0);
}

namespace {

/// Held while the followers of a global field change: graphs of several threads have such.
class FollowersLock {
public:
    explicit FollowersLock(const SoFieldContainer* container)
    {
        if (kalmyr::detail::isGlobal(container))
            m_lock.emplace();
    }

private:
    std::optional<kalmyr::detail::CacheLock> m_lock;
};

} // namespace

void SoField::addAuditor(SoAuditor* auditor, SoAuditor::Type type)
{
    const FollowersLock lock(m_container);
    SoAuditorList& auditors = extra().auditors;
    const bool first = auditors.getLength() == 0;
    auditors.append(auditor, type);
    SoNotification::repeatWalks(); // of what the field holds
    if (first && m_container)
        m_container->listenersChanged(this);
}

void SoField::removeAuditor(SoAuditor* auditor)
{
    const FollowersLock lock(m_container);
    if (!m_extra || m_extra->auditors.getLength() == 0)
        return;
    m_extra->auditors.remove(auditor);
    if (m_container && m_extra->auditors.getLength() == 0)
        m_container->listenersChanged(this);
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
