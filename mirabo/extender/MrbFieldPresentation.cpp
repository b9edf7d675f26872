#include "mirabo/extender/MrbFieldPresentation.h"

#include "mirabo/extender/private/FieldPresentations.h"

#include <kalmyr/core/SoFieldIO.h>

#include <QByteArray>

#include <algorithm>
#include <charconv>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <utility>

namespace {

using Shown = MrbFieldPresentation::Shown;

QString toText(const std::string& text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

/// As files have it, but of nodes only their names: whole graphs are nothing to read in a row.
QString fullText(const SoField& field)
{
    std::string text;
    SoFieldWriter writer(text);
    field.evaluate();
    field.writeValue(writer);
    return toText(text);
}

bool isList(const SoField& field)
{
    return field.isOfType(SoMField::getClassTypeId());
}

QString firstValues(const SoMField& field, int count)
{
    QString text;
    std::string value;
    SoFieldWriter writer(value);
    for (int i = 0; i < count; ++i) {
        value.clear();
        field.write1Value(i, writer);
        text += (i > 0 ? ", " : "") + toText(value);
    }
    return text;
}

std::vector<double> numbersIn(const QByteArray& text)
{
    std::vector<double> numbers;
    const char* at = text.constData();
    const char* end = at + text.size();
    for (;;) {
        while (at < end && (*at == ' ' || *at == ',' || *at == '['))
            ++at;
        double number = 0;
        const auto result = std::from_chars(at, end, number);
        if (result.ec != std::errc())
            return numbers;
        numbers.push_back(number);
        at = result.ptr;
    }
}

/// By type index; of several for one type the last one counts.
struct Table {
    std::shared_mutex mutex; ///< a row says its last in the thread where its field dies
    std::unordered_map<int, std::vector<std::shared_ptr<const MrbFieldPresentation>>> entries;
};

Table& table()
{
    static auto* table = [] {
        auto* filled = new Table; // rows of other threads may ask until the process ends
        for (auto& [type, presentation] : mirabo::builtInPresentations())
            filled->entries[type.getIndex()].push_back(std::move(presentation));
        return filled;
    }();
    return *table;
}

} // namespace

MrbSortKey MrbSortKey::ofText(const QString& text)
{
    std::vector<double> numbers = numbersIn(text.toLatin1());
    QString words = numbers.empty() ? text : QString();
    return {std::move(numbers), std::move(words)};
}

bool operator<(const MrbSortKey& a, const MrbSortKey& b)
{
    if (a.numbers.empty() != b.numbers.empty())
        return b.numbers.empty();
    if (!a.numbers.empty())
        return a.numbers < b.numbers;
    const int order = a.text.compare(b.text, Qt::CaseInsensitive);
    return order != 0 ? order < 0 : a.text < b.text;
}

MrbFieldPresentation::~MrbFieldPresentation() = default;

Shown MrbFieldPresentation::shown(const SoField& field) const
{
    if (!isList(field))
        return {fullText(field)};
    const auto& list = static_cast<const SoMField&>(field);
    const int num = list.getNum();
    if (num == 0)
        return {fullText(field)};
    const QString text = firstValues(list, std::min(num, kMaxShownValues));
    return {num > kMaxShownValues ? text + "..." : text};
}

QString MrbFieldPresentation::clipboardText(const SoField& field) const
{
    const bool isLong =
        isList(field) && static_cast<const SoMField&>(field).getNum() > kMaxCopiedValues;
    return isEditable(field) && isList(field) && !isLong ? fullText(field) : shown(field).text;
}

QString MrbFieldPresentation::toolTip(const SoField& field, const QString& shown) const
{
    QString text = shown;
    if (text.size() > kMaxToolTipLength)
        text = text.left(kMaxToolTipLength) + "...";
    const int num = isList(field) ? static_cast<const SoMField&>(field).getNum() : 0;
    return num > kMaxShownValues ? QString("%1\n%2 values").arg(text).arg(num) : text;
}

bool MrbFieldPresentation::isEditable(const SoField& field) const
{
    return field.getFieldType() != SoField::EVENT_OUT;
}

bool MrbFieldPresentation::isWatchable(const SoField&) const
{
    return true;
}

MrbSortKey MrbFieldPresentation::sortKey(const SoField&, const QString& shown) const
{
    return MrbSortKey::ofText(shown);
}

MrbFieldPresentations::Registration::Registration(
    SoType type, std::unique_ptr<MrbFieldPresentation> presentation)
    : m_type(type.getIndex()), m_presentation(std::move(presentation))
{
    const std::unique_lock lock(table().mutex);
    table().entries[m_type].push_back(m_presentation);
}

MrbFieldPresentations::Registration::~Registration()
{
    const std::unique_lock lock(table().mutex);
    std::erase(table().entries[m_type], m_presentation);
}

std::shared_ptr<const MrbFieldPresentation> MrbFieldPresentations::of(const SoField& field)
{
    static const auto text = std::make_shared<const MrbFieldPresentation>();
    const std::shared_lock lock(table().mutex);
    const auto& entries = table().entries;
    for (SoType type = field.getTypeId(); !type.isBad(); type = type.getParent())
        if (const auto at = entries.find(type.getIndex());
            at != entries.end() && !at->second.empty())
            return at->second.back();
    return text;
}
