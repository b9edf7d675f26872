#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbString.h>

#include <optional>

/// Settings by name. A value is looked for in the environment, then in the file that the
/// environment variable KMR_PREFERENCES_FILE names (lines of `NAME=VALUE`, `#` begins a comment
/// line), then among the values set by the program. Safe in any thread as long as nobody changes
/// the environment meanwhile.
class KALMYRBASE_API SoPreferences {
public:
    SoPreferences() = delete;

    /// Nothing when the name has no value; an empty value is a value.
    static std::optional<SbString> findValue(const SbString& name);
    static bool hasValue(const SbString& name) { return findValue(name).has_value(); }
    /// Empty when there is no value.
    static SbString getValue(const SbString& name);

    /// The typed readers give `fallback` when there is no value or the text is no such thing.
    static SbString getString(const SbString& name, const SbString& fallback);
    /// 1, true, yes, on; 0, false, no, off; in any case. Other whole numbers are true.
    static bool getBool(const SbString& name, bool fallback);
    static int getInt(const SbString& name, int fallback);
    static float getFloat(const SbString& name, float fallback);

    /// Sets a value for this process. It is hidden as long as the environment or the file has one
    /// of that name.
    static void setValue(const SbString& name, const SbString& value);
    static void setBool(const SbString& name, bool value) { setValue(name, value ? "1" : "0"); }
    static void setInt(const SbString& name, int value) { setValue(name, SbString(value)); }
    static void setFloat(const SbString& name, float value) { setValue(name, SbString(value)); }
    /// Forgets a value set by the program.
    static void removeValue(const SbString& name);
};
