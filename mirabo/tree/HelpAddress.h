#pragma once

#include <QString>
#include <QUrl>

#include <string_view>

/// Where the reference page of a node class is found.
namespace mirabo {

/// Name of the page without its ending: "_so_separator" for "Separator".
QString helpPageName(std::string_view typeName);
QUrl helpAddress(std::string_view typeName);

} // namespace mirabo
