#pragma once

#include <QString>

#include <functional>
#include <span>

namespace mirabo {

class ShownScene;

enum class ExportResult { Written, Stopped, Failed };

/// A file that a scene is written to.
struct ExportTarget {
    QString fileName;
    /// Called now and then with the share of the work that is done; false stops it. Above 0 nobody
    /// looks at the scene any more.
    std::function<bool(float share)> goesOn;
};

/// A file format to export to. What it writes takes its name only when it is complete; until then,
/// and when it was stopped or failed, the old file is as it was. Errors are posted by the toolkit.
struct ExportFormat {
    const char* filter; ///< in the file dialog
    const char* extension;
    ExportResult (*write)(const ShownScene& scene, const ExportTarget& target);
};

/// In the order of the dialog.
std::span<const ExportFormat> exportFormats();
/// Null when there is no such filter.
const ExportFormat* findExportFormat(const QString& filter);
/// The filters, joined as QFileDialog takes them.
QString exportFilters();
/// The name with the format's extension, unless it holds that anywhere.
QString withExtension(const QString& fileName, const ExportFormat& format);

} // namespace mirabo
