#pragma once

#include <QString>
#include <QVariant>

#include <vector>

/// All keys of the settings store: what each of them holds, within which limits, and what counts
/// where nothing is stored. A key that is not declared here cannot be written.
namespace mirabo {

/// Point sizes of the texts of rows.
inline constexpr int kLeastPointSize = 4;
inline constexpr int kMostPointSize = 96;
/// Pixels that a column or a window may be asked to have, and those of a panel in a window, which
/// cannot be smaller than all of its panels.
inline constexpr int kMostPixels = 32767;
inline constexpr int kMostPanelPixels = 2000;

/// A key, or a family of keys, and its values.
struct SettingKey {
    enum Kind { Flag, Number, Text, Texts };

    QString name; ///< without a slash in front; one '*' stands for one character or more
    Kind kind;
    /// What is read where nothing of use is stored. Invalid: whoever reads gives it.
    QVariant fallback;
    /// Limits of a number, of the length of a text, or of how many texts there are.
    int least = 0;
    int most = 0;
};

const std::vector<SettingKey>& settingKeys();
/// The declaration of a full key, however many slashes are in front of its parts; null: none.
const SettingKey* findSettingKey(const QString& key);

/// The value as its kind and limits have it: a number beyond a limit becomes that limit, texts
/// after the last one that is allowed are left out. Invalid when the value is of another kind, or
/// a text is too short or too long.
QVariant checkedSetting(const SettingKey& key, const QVariant& value);

} // namespace mirabo
