#pragma once

/// The user's preferences of the editors, kept with the tool's.
namespace settings {

/// Significant digits of numbers that are not being edited; 0: as many as tell the number apart
/// from all others.
int digits();
void setDigits(int digits);
inline constexpr int kMaxDigits = 17;

/// The unit that angles are shown in at first.
bool anglesInDegrees();
void setAnglesInDegrees(bool on);

} // namespace settings
