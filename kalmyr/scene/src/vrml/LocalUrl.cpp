#include "LocalUrl.h"

#include "core/PercentText.h"

namespace kalmyr::detail {

namespace {

bool isSchemeChar(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+'
           || c == '-' || c == '.';
}

/// Length of "scheme:", or 0. A single letter is a drive.
std::size_t schemeLength(std::string_view url)
{
    std::size_t n = 0;
    while (n < url.size() && isSchemeChar(url[n]))
        ++n;
    return n > 1 && n < url.size() && url[n] == ':' ? n + 1 : 0;
}

} // namespace

SbString localFileName(const SbString& url)
{
    std::string_view rest = url.view();
    const std::size_t scheme = schemeLength(rest);
    if (scheme == 0)
        return url;
    if (rest.substr(0, scheme) != "file:")
        return {};
    rest.remove_prefix(scheme);
    if (rest.starts_with("//localhost/"))
        rest.remove_prefix(11);
    if (rest.starts_with("///"))
        rest.remove_prefix(2);
    return SbString(decodePercent(rest));
}

} // namespace kalmyr::detail
