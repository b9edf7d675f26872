#pragma once

#include <QDialog>

namespace mirabo {

/// Tells about the product: version, purpose, libraries in use, licence.
class AboutDialog final : public QDialog {
    Q_OBJECT

public:
    explicit AboutDialog(QWidget* parent);
};

} // namespace mirabo
