#include "FieldValueWriter.h"

#include "core/NodeFields.h"
#include "Relocation.h"
#include "WriteDialect.h"
#include "WriteInterruption.h"
#include "WrittenText.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/fields/SoSFArray.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/fields/SoValueText.h>
#include <kalmyr/io/SoOutput.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <vector>

namespace kalmyr::detail {

namespace {

/// The slices of a volume, one above the other.
void writeFlat(std::string& out, const SbImage& image)
{
    SbImage flat;
    flat.setValue({image.getWidth(), image.getHeight() * std::max(image.getDepth(), 1)},
                  image.getComponents(), image.getBytes());
    writeText(out, flat);
}

/// Whether writing a field takes long enough to be interrupted.
bool isLong(const SoField& field)
{
    constexpr int kLong = 4096; // values
    if (field.isOfType(SoSFArray::getClassTypeId()))
        return static_cast<const SoSFArray&>(field).getNumValues() > kLong;
    return field.isOfType(SoMField::getClassTypeId()) && !hasObjectsInText(field.getTypeId())
           && static_cast<const SoMField&>(field).getNum() > kLong;
}

} // namespace

FieldValueWriter::FieldValueWriter(WrittenText& text, const WriteDialect& dialect,
                                   WriteInterruption& interruption, const SoOutput& out,
                                   SoFieldWriter& values)
    : m_text(text), m_dialect(dialect), m_interruption(interruption), m_values(values)
{
    if (out.getFileName().isEmpty())
        return;
    std::error_code ignored;
    const std::filesystem::path file =
        std::filesystem::absolute(out.getFileName().toStdString(), ignored);
    m_folder = SbString(file.parent_path().string());
}

void FieldValueWriter::write(const SoNode* node, const SoField& field)
{
    if (m_text.block(field))
        return;
    if (!m_dialect.hasVolumes() && field.isOfType(SoSFImage::getClassTypeId())) {
        writeFlat(m_text.buffer(), static_cast<const SoSFImage&>(field).getValue());
        return;
    }
    const SbString* origin = m_folder.isEmpty() ? nullptr : originOf(node, &field);
    if (origin && !origin->isEmpty()) {
        relocatedUrls(field, *origin);
    } else if (m_interruption.isPossible() && isLong(field)) {
        copyOf(field);
    } else {
        const WriteInterruption::Value value(m_interruption);
        field.writeValue(m_values);
    }
}

void FieldValueWriter::relocatedUrls(const SoField& field, const SbString& origin)
{
    if (field.isOfType(SoSFString::getClassTypeId())) {
        SoSFString moved;
        moved = relocated(static_cast<const SoSFString&>(field).getValue(), origin, m_folder);
        moved.writeValue(m_values);
        return;
    }
    const auto urls = static_cast<const SoMFString&>(field).values();
    std::vector<SbString> values(urls.begin(), urls.end());
    for (SbString& url : values)
        url = relocated(url, origin, m_folder);
    SoMFString moved;
    moved.setValues(0, {values.data(), values.size()});
    moved.writeValue(m_values);
}

/// The field may get other values while its text is interrupted.
void FieldValueWriter::copyOf(const SoField& field)
{
    const std::unique_ptr<SoField> copy(static_cast<SoField*>(field.getTypeId().createInstance()));
    copy->copyFrom(field);
    const WriteInterruption::Copy inCopy(m_interruption);
    copy->writeValue(m_values);
}

} // namespace kalmyr::detail
