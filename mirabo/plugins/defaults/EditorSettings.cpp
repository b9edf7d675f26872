#include "EditorSettings.h"

#include <QSettings>

#include <algorithm>

namespace settings {

namespace {

constexpr char kDigits[] = "FieldEditor/Digits";
constexpr char kDegrees[] = "FieldEditor/AnglesInDegrees";

int s_digits = -1; // as read last: boxes ask for it at every change; negative: not read yet

constexpr char kOrganisation[] = "Mirabo";
constexpr char kApplication[] = "MiraboViewer";

} // namespace

int digits()
{
    if (s_digits < 0)
        s_digits = std::clamp(QSettings(kOrganisation, kApplication).value(kDigits, 0).toInt(), 0,
                              kMaxDigits);
    return s_digits;
}

void setDigits(int digits)
{
    s_digits = std::clamp(digits, 0, kMaxDigits);
    QSettings(kOrganisation, kApplication).setValue(kDigits, s_digits);
}

bool anglesInDegrees()
{
    const QString text = QSettings(kOrganisation, kApplication).value(kDegrees, "true").toString();
    return text != "false";
}

void setAnglesInDegrees(bool on)
{
    QSettings(kOrganisation, kApplication).setValue(kDegrees, on);
}

} // namespace settings
