#include <kalmyr/base/SoPreferences.h>

#include <kalmyr/base/SbNumber.h>
#include <kalmyr/base/SoDebugError.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <mutex>
#include <string>

namespace {

using Values = std::map<std::string, SbString, std::less<>>;

constexpr const char* kFileVariable = "KMR_PREFERENCES_FILE";

// The lines of a preferences file. Reading does not go through SbFileHelper, which asks for
// preferences itself.
bool readValues(const std::string& path, Values& values)
{
    std::ifstream file(path);
    if (!file) {
        return false;
    }
    for (std::string line; std::getline(file, line);) {
        const SbString text = SbString(line).trim();
        const std::size_t equals = text.find("=");
        if (text.isEmpty() || text[0] == '#' || equals == SbString::npos || equals == 0) {
            continue;
        }
        const SbString name = text.getSubString(0, equals - 1).trim();
        values[name.toStdString()] = text.getSubString(equals + 1).trim();
    }
    return true;
}

class Store {
public:
    static Store& instance()
    {
        // Never destroyed: preferences are asked for until the very end of the process.
        static auto* const store = new Store;
        return *store;
    }

    std::optional<SbString> find(const SbString& name)
    {
        std::string unreadable;
        std::optional<SbString> r;
        {
            const std::lock_guard lock(m_mutex);
            refreshFile(unreadable);
            r = findIn(m_fromFile, name);
            r = r ? r : findIn(m_set, name);
        }
        // Outside the lock, since a handler may ask for preferences.
        if (!unreadable.empty()) {
            SoDebugError::postWarning("SoPreferences", "%s names a file that cannot be read: %s",
                                      kFileVariable, unreadable.c_str());
        }
        return r;
    }

    void set(const SbString& name, const SbString& value)
    {
        const std::lock_guard lock(m_mutex);
        m_set[name.toStdString()] = value;
    }

    void remove(const SbString& name)
    {
        const std::lock_guard lock(m_mutex);
        m_set.erase(name.toStdString());
    }

private:
    static std::optional<SbString> findIn(const Values& values, const SbString& name)
    {
        const auto it = values.find(name.view());
        return it == values.end() ? std::nullopt : std::optional(it->second);
    }

    // Reads the file again only when the variable names another one.
    void refreshFile(std::string& unreadable)
    {
        const char* variable = std::getenv(kFileVariable);
        const std::string path = variable ? variable : "";
        if (path == m_path) {
            return;
        }
        m_path = path;
        m_fromFile.clear();
        if (!path.empty() && !readValues(path, m_fromFile)) {
            unreadable = path;
        }
    }

    std::mutex m_mutex;
    std::string m_path;
    Values m_fromFile;
    Values m_set;
};

} // namespace

std::optional<SbString> SoPreferences::findValue(const SbString& name)
{
    if (name.isEmpty()) {
        return std::nullopt;
    }
    if (const char* value = std::getenv(name.getString())) {
        return SbString(value);
    }
    return Store::instance().find(name);
}

SbString SoPreferences::getValue(const SbString& name)
{
    return getString(name, SbString());
}

SbString SoPreferences::getString(const SbString& name, const SbString& fallback)
{
    return findValue(name).value_or(fallback);
}

bool SoPreferences::getBool(const SbString& name, bool fallback)
{
    const SbString text = getValue(name).trim().lower();
    if (text == "true" || text == "yes" || text == "on") {
        return true;
    }
    if (text == "false" || text == "no" || text == "off") {
        return false;
    }
    std::int32_t number;
    return SbNumber::toInt(text, number) ? number != 0 : fallback;
}

int SoPreferences::getInt(const SbString& name, int fallback)
{
    std::int32_t number;
    return SbNumber::toInt(getValue(name).trim(), number) ? number : fallback;
}

float SoPreferences::getFloat(const SbString& name, float fallback)
{
    float number;
    return SbNumber::toFloat(getValue(name).trim(), number) ? number : fallback;
}

void SoPreferences::setValue(const SbString& name, const SbString& value)
{
    Store::instance().set(name, value);
}

void SoPreferences::removeValue(const SbString& name)
{
    Store::instance().remove(name);
}
