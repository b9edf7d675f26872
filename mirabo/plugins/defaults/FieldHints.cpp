#include "FieldHints.h"

#include <kalmyr/core/SoType.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace {

using Key = std::pair<std::string_view, std::string_view>;

Key keyOf(const FieldHint& hint)
{
    return {hint.containerType, hint.fieldName};
}

} // namespace

QString fieldHint(const QString& containerType, const QString& fieldName)
{
    const std::string field = fieldName.toStdString();
    const FieldHint* end = kFieldHints + kFieldHintCount;
    for (SoType type = SoType::fromName(SbName(containerType.toUtf8().constData())); !type.isBad();
         type = type.getParent()) {
        const Key key{type.getName().view(), field};
        const FieldHint* hint = std::lower_bound(
            kFieldHints, end, key, [](const FieldHint& a, const Key& b) { return keyOf(a) < b; });
        if (hint != end && keyOf(*hint) == key)
            return QString::fromUtf8(hint->text);
    }
    return {};
}
