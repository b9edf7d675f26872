#include <kalmyr/core/SoField.h>

#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoReadError.h>
#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/core/SoFieldIO.h>

#include "core/CacheLock.h"
#include "core/FieldText.h"
#include "core/NodeFields.h"
#include "core/Threads.h"
#include "core/WalkStack.h"
#include "fields/NodeHolding.h"
#include "SoFieldExtra.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

namespace {

SoType s_fieldType;
SoType s_singleType;
SoType s_multipleType;

void postFault(const kalmyr::detail::TextFault& fault)
{
    SoReadError::post("", fault.line, fault.column, "%s", fault.message.c_str());
}

/// A value is all that the text says.
template <class ReadValue>
bool readWhole(SoFieldReader& in, SoType type, ReadValue readValue)
{
    const bool hasObjects = kalmyr::detail::hasObjectsInText(type);
    // Engines as values begin as statements do; in front stand declarations of prototypes only.
    const std::string_view first = hasObjects ? in.text.peekWord() : std::string_view();
    const bool isDeclared = first == "PROTO" || first == "EXTERNPROTO";
    return (!isDeclared || kalmyr::detail::readStatements(in)) && readValue()
           && (!hasObjects || kalmyr::detail::readStatements(in))
           && (in.text.atEnd() || in.text.fail("expected the end of the value"));
}

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
    if (kalmyr::holds(type <= 7, "a field type of three bits"))
        changeFlags(7u << kTypeShift, static_cast<std::uint32_t>(type) << kTypeShift);
}

void SoField::get(SbString& text) const
{
    evaluate();
    text =
        SbString(kalmyr::detail::writeValueText([this](SoFieldWriter& out) { writeValue(out); }));
}

bool SoField::set(const char* text)
{
    return kalmyr::holds(text, "a text") && set(SbString(text));
}

std::unique_ptr<SoField> SoField::createTwin() const
{
    std::unique_ptr<SoField> twin(static_cast<SoField*>(getTypeId().createInstance()));
    if (twin)
        prepareTwin(*twin);
    return twin;
}

bool SoField::readText(const SbString& text, kalmyr::detail::TextFault& fault)
{
    // Into a twin first, so that a fault leaves this value as it was.
    std::unique_ptr<SoField> twin;
    const auto read = [this, &twin](SoFieldReader& in) {
        twin = createTwin();
        SoField& target = twin ? *twin : *this;
        return readWhole(in, getTypeId(), [&] { return target.readValue(in); });
    };
    if (!kalmyr::detail::readValueText(text, read, fault))
        return false;
    SbString why;
    if (twin && !kalmyr::detail::mayTake(*this, *twin, why)) {
        fault = {1, 1, why.getString()};
        return false;
    }
    if (twin)
        copyFrom(*twin);
    return true;
}

bool SoField::set(const SbString& text)
{
    kalmyr::detail::TextFault fault;
    if (readText(text, fault))
        return true;
    postFault(fault);
    return false;
}

bool SoField::set(const SbString& text, SbString& problem)
{
    kalmyr::detail::TextFault fault;
    if (readText(text, fault))
        return true;
    problem = SbString(std::to_string(fault.line) + ':' + std::to_string(fault.column) + ": "
                       + fault.message);
    return false;
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
    if ((flags() & kQuiet) || (!m_container && !m_extra))
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
    if (!kalmyr::holds(auditor, "an auditor"))
        return;
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
    evaluate();
    text.makeEmpty();
    if (kalmyr::holds(index >= 0 && index < getNum(), "0 <= index < getNum()"))
        text = SbString(kalmyr::detail::writeValueText(
            [this, index](SoFieldWriter& out) { write1Value(index, out); }));
}

bool SoMField::set1(int index, const char* text)
{
    return kalmyr::holds(text, "a text") && set1(index, SbString(text));
}

bool SoMField::set1(int index, const SbString& text)
{
    if (!kalmyr::holds(index >= 0, "index >= 0"))
        return false;
    // A twin reads first, so that a fault leaves this value as it was.
    std::unique_ptr<SoField> twin;
    const auto readTwin = [this, &twin](SoFieldReader& in) {
        twin = createTwin();
        if (!twin)
            return true;
        return readWhole(in, getTypeId(),
                         [&] { return static_cast<SoMField&>(*twin).read1Value(0, in); });
    };
    const auto readOwn = [this, index](SoFieldReader& in) {
        return readWhole(in, getTypeId(), [&] { return read1Value(index, in); });
    };
    kalmyr::detail::TextFault fault;
    SbString why;
    const bool isValue = kalmyr::detail::readValueText(text, readTwin, fault);
    const bool isTaken = isValue && (!twin || kalmyr::detail::mayTake(*this, *twin, why));
    if (isValue && !isTaken)
        fault = {1, 1, why.getString()};
    if (isTaken && kalmyr::detail::readValueText(text, readOwn, fault))
        return true;
    postFault(fault);
    return false;
}

bool SoMField::canReplace(int start, int removed, const SoMField& source, int from, int count,
                          int maxNum) const
{
    const auto isRange = [](int first, int length, int num) {
        return first >= 0 && length >= 0 && first <= num && length <= num - first;
    };
    const int num = getNum();
    return kalmyr::holds(&source != this && source.getTypeId() == getTypeId(),
                         "another field of the same type")
           && kalmyr::holds(isRange(start, removed, num) && isRange(from, count, source.getNum())
                                && count <= maxNum - (num - removed),
                            "ranges of values that are there, and no more than kMaxNum values");
}

bool SoMField::isIndex(int index, int num)
{
    return kalmyr::holds(index >= 0 && index < num, "0 <= index < the number of values");
}

int SoMField::countToDelete(int num, int start, int count)
{
    if (!kalmyr::holds(start >= 0 && start <= num, "0 <= start <= getNum()"))
        return 0;
    return count < 0 ? num - start : std::min(count, num - start);
}

bool SoMField::canInsert(int num, int start, int count, int maxNum)
{
    return kalmyr::holds(start >= 0 && count >= 0, "start and count from 0 on")
           && kalmyr::holds(count <= maxNum - std::max(start, num), "at most kMaxNum values")
           && count > 0;
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
