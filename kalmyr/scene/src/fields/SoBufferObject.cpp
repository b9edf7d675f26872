#include <kalmyr/fields/SoBufferObject.h>

#include <utility>

namespace {

SoType s_type;

} // namespace

SoType SoBufferObject::getClassTypeId()
{
    return s_type;
}

SoType SoBufferObject::getTypeId() const
{
    return s_type;
}

void SoBufferObject::initClass()
{
    s_type = SoType::createType(SoBase::getClassTypeId(), SbName("BufferObject"),
                                []() -> void* { return static_cast<SoBase*>(new SoBufferObject); });
}

void SoBufferObject::setBytes(std::span<const std::byte> bytes)
{
    adopt({bytes.begin(), bytes.end()});
}

void SoBufferObject::adopt(std::vector<std::byte>&& bytes)
{
    m_bytes = std::move(bytes);
    finishEditing();
}

void SoBufferObject::finishEditing()
{
    m_changeId = SoNotification::nextStamp();
    SoNotification notification;
    notification.stamp = m_changeId;
    m_auditors.notify(notification);
}
