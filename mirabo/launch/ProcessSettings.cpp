#include "mirabo/launch/ProcessSettings.h"

#include <kalmyr/base/SoPreferences.h>

namespace mirabo {

namespace {

constexpr char kOn[] = "1";

} // namespace

void ProcessSettings::Preference::set()
{
    if (!isChanged && SoPreferences::hasValue(name))
        before = SoPreferences::getValue(name);
    isChanged = true;
    SoPreferences::setValue(name, kOn);
}

void ProcessSettings::Preference::putBack()
{
    if (isChanged && SoPreferences::getValue(name) == kOn) {
        if (before)
            SoPreferences::setValue(name, *before);
        else
            SoPreferences::removeValue(name);
    }
    isChanged = false;
    before.reset();
}

void ProcessSettings::useCLocale()
{
    if (!m_localeBefore)
        m_localeBefore = QLocale();
    QLocale::setDefault(QLocale::c());
}

void ProcessSettings::recordErrorStacks()
{
    if (!SoPreferences::hasValue(m_record.name))
        m_record.set();
    m_html.set();
}

void ProcessSettings::putBack()
{
    if (m_localeBefore && QLocale() == QLocale::c())
        QLocale::setDefault(*m_localeBefore);
    m_localeBefore.reset();
    m_record.putBack();
    m_html.putBack();
}

} // namespace mirabo
