#include "PartName.h"

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/nodekits/SoNodeKitListPart.h>

#include <algorithm>
#include <charconv>

namespace kalmyr::detail {

namespace {

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view kBlank = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlank);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

/// Position of the brace that closes the one at `open`; npos when it is missing.
std::size_t findClosing(std::string_view text, std::size_t open)
{
    int depth = 0;
    bool quoted = false;
    for (std::size_t i = open; i < text.size(); ++i) {
        const char c = text[i];
        if (quoted && c == '\\')
            ++i;
        else if (c == '"')
            quoted = !quoted;
        else if (!quoted && c == '{')
            ++depth;
        else if (!quoted && c == '}' && --depth == 0)
            return i;
    }
    return std::string_view::npos;
}

bool isUsedElsewhere(const SoNode* node)
{
    // The kit holds a part twice, by the field and in its graph.
    const SoAuditorList& auditors = node->getAuditors();
    int holders = 0;
    for (int i = 0; i < auditors.getLength(); ++i) {
        const auto type = auditors[i].type;
        if (type == SoAuditor::PARENT || type == SoAuditor::FIELD)
            holders += auditors[i].multiplicity;
    }
    return holders > 2;
}

bool hasWrittenFields(const SoNode* node)
{
    const std::vector<SoField*> fields = node->getFields();
    return std::any_of(fields.begin(), fields.end(),
                       [node](const SoField* field) { return node->isFieldWritten(*field); });
}

} // namespace

bool PartName::parse(std::string_view name)
{
    const std::size_t point = name.find('.');
    part = name.substr(0, point);
    rest = point == std::string_view::npos ? std::string_view() : name.substr(point + 1);
    if (point != std::string_view::npos && rest.empty())
        return false;
    index = -1;
    const std::size_t bracket = part.find('[');
    if (bracket == std::string_view::npos)
        return !part.empty();
    const char* first = part.data() + bracket + 1;
    const char* last = part.data() + part.size() - 1;
    if (last <= first || *last != ']' || *first == '-')
        return false;
    const auto [end, error] = std::from_chars(first, last, index);
    part = part.substr(0, bracket);
    return error == std::errc() && end == last && !part.empty();
}

bool isPartText(std::string_view text)
{
    const std::size_t open = text.find('{');
    return open != std::string_view::npos
           && trimmed(text.substr(0, open)).find_first_of(" \t\r\n\"[") == std::string_view::npos;
}

bool takePartText(std::string_view& text, std::string_view& part, std::string_view& fields)
{
    text = trimmed(text);
    const std::size_t open = text.find('{');
    const std::size_t close = open == std::string_view::npos ? open : findClosing(text, open);
    if (close == std::string_view::npos)
        return false;
    part = trimmed(text.substr(0, open));
    fields = text.substr(open + 1, close - open - 1);
    text = trimmed(text.substr(close + 1));
    return true;
}

bool isUntouchedPart(const SoNode* node)
{
    if (!node->getName().isEmpty() || node->isOverride() || isUsedElsewhere(node))
        return false;
    if (node->isOfType(SoNodeKitListPart::getClassTypeId())) {
        const SoNode* group = static_cast<const SoNodeKitListPart*>(node)->containerNode.getValue();
        return !group || isUntouchedPart(group);
    }
    const SoChildList* children = node->getChildren();
    return !hasWrittenFields(node) && (!children || children->getLength() == 0);
}

} // namespace kalmyr::detail
