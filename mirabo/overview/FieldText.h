#pragma once

#include <QString>

class SoField;

namespace mirabo {

/// What a field list shows of a field's value.
struct FieldText {
    QString text;
    bool editable = true; ///< false: the value is not edited in place, its row is disabled
    bool isImage = false; ///< shown without text
};

/// Values of a multiple-value field beyond this many are not written out.
inline constexpr int kMaxShownValues = 6;
/// Arrays of more elements than this are not written out.
inline constexpr int kMaxShownArrayElements = 4096;

/// Makes the value text. The cost does not depend on how many values the field holds.
FieldText fieldText(const SoField& field);

} // namespace mirabo
