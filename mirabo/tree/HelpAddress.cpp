#include "mirabo/tree/HelpAddress.h"

#include "mirabo/preferences/Settings.h"

namespace mirabo {

QString helpPageName(std::string_view typeName)
{
    QString page;
    for (const char c : typeName) {
        if (c >= 'A' && c <= 'Z')
            page += QString('_') + QChar(c - 'A' + 'a');
        else
            page += QChar::fromLatin1(c);
    }
    const bool hasPrefix = page.contains("_po_") || page.contains("_so_") || page.contains("_mo");
    return hasPrefix ? page : "_so" + page;
}

QUrl helpAddress(std::string_view typeName)
{
    const QString server = readDocumentationAddress();
    return QUrl(server + "/content/c-api?apiurl=" + server + "/APIS/RefManCpp/class"
                + helpPageName(typeName) + ".html");
}

} // namespace mirabo
