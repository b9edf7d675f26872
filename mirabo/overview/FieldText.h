#pragma once

#include <QString>

class SoField;

namespace mirabo {

/// Text of a field's value in a field list.
struct FieldText {
    QString text;
    bool isImage = false; ///< shown without text
};

/// Values of a multiple-value field beyond this many are not written out.
inline constexpr int kMaxShownValues = 6;
/// Arrays of more elements than this are not written out.
inline constexpr int kMaxShownArrayElements = 4096;
/// Fields of more values than this are copied as they are shown.
inline constexpr int kMaxCopiedValues = 100'000;
/// Characters of a value that a tool tip shows.
inline constexpr int kMaxToolTipLength = 2000;

/// Makes the value text. The cost does not depend on how many values the field holds.
FieldText fieldText(const SoField& field);

/// Whether the value can be edited as text. Cheap: no text is made.
bool isEditedInPlace(const SoField& field);

/// Whether the field may be watched; fields that hold nodes are looked at in the overview.
bool isWatchable(const SoField& field);

/// The value for the clipboard: in full where its size allows, as scene text.
QString copiedText(const SoField& field);

/// The value for a tool tip; says more than the cell where that has no text.
QString toolTipText(const SoField& field, const QString& shown);

} // namespace mirabo
