#pragma once

#include <string_view>

class SoNode;

namespace kalmyr::detail {

/// The first step of a name such as "childList[2].transform".
struct PartName {
    std::string_view part;
    int index = -1;        ///< in a list; -1 for the part itself
    std::string_view rest; ///< behind the point; empty at the last step

    /// False for a text that is no such name.
    bool parse(std::string_view name);
};

/// Takes "part { fields }" from the front of a text, the fields without the braces. False at the
/// end, then `text` is empty, and where the text has another form.
/// Whether the text names parts with fields in braces, rather than fields of the kit.
bool isPartText(std::string_view text);
bool takePartText(std::string_view& text, std::string_view& part, std::string_view& fields);

/// Whether a part is as a kit makes it: nameless, with default values, nothing below it, and used
/// nowhere else.
bool isUntouchedPart(const SoNode* node);

} // namespace kalmyr::detail
