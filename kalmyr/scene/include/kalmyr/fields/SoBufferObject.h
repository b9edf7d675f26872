#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/core/SoBase.h>
#include <kalmyr/core/SoNotification.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// A block of bytes that several fields and nodes share, such as vertex data.
class KALMYR_API SoBufferObject final : public SoBase {
public:
    static SoType getClassTypeId();
    static void initClass();
    SoType getTypeId() const override;

    SoBufferObject() = default;

    std::size_t getSize() const { return m_bytes.size(); }
    std::span<const std::byte> getBytes() const { return m_bytes; }
    /// Copies the bytes and tells every field that holds the buffer.
    void setBytes(std::span<const std::byte> bytes);
    /// Takes the bytes over.
    void adopt(std::vector<std::byte>&& bytes);
    /// Direct access; finishEditing() tells.
    std::span<std::byte> startEditing() { return m_bytes; }
    void finishEditing();

    /// Stamp of the last change, as that of nodes: equal stamps mean unchanged.
    std::uint64_t getChangeId() const { return m_changeId; }

private:
    ~SoBufferObject() override = default;

    std::vector<std::byte> m_bytes;
    std::uint64_t m_changeId = SoNotification::nextStamp();
};
