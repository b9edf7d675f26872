#pragma once

#include <kalmyr/base/SbString.h>

#include <QLocale>

#include <optional>

namespace mirabo {

/// Changes settings of the whole process for a run, and restores them at its end unless somebody
/// else has changed it since: Qt's default locale, and how the toolkit's errors are recorded.
class ProcessSettings {
public:
    /// Numbers have a point from now on.
    void useCLocale();
    /// Errors carry their call stack, unless the host has said whether they shall.
    void recordErrorStacks();
    void putBack();

private:
    struct Preference {
        const char* name;
        bool isChanged = false;
        std::optional<SbString> before = std::nullopt; ///< nothing: it had no value

        void set();
        void putBack();
    };

    std::optional<QLocale> m_localeBefore;
    Preference m_record{"KMR_DEBUG_STACKERROR"};
    Preference m_html{"KMR_STACKWALKER_HTML_OUTPUT"};
};

} // namespace mirabo
