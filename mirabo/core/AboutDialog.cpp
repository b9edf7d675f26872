#include "mirabo/core/AboutDialog.h"

#include <kalmyr/io/SoDB.h>

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <array>

namespace mirabo {

namespace {

constexpr int kIconSize = 96;
constexpr int kTextWidth = 70; // characters
const QString kTable = "<table cellspacing=\"0\" cellpadding=\"3\">";

/// Whose work is in the program, and on what terms.
struct Library {
    const char* name;
    const char* purpose;
    const char* licence;
};

constexpr std::array kLibraries{
    Library{"Qt", "windows and widgets", "LGPL 3"},
    Library{"libepoxy", "OpenGL functions", "MIT"},
    Library{"libpng, libjpeg-turbo, libtiff, giflib", "pictures", "permissive"},
    Library{"FreeType, fontconfig", "fonts", "FreeType licence, MIT"},
    Library{"GLU tessellator", "concave faces", "SGI B"},
    Library{"zlib", "compression", "zlib"},
};

QString versionRow(const QString& what, const QString& version)
{
    return QString("<tr><td>%1</td><td>%2</td></tr>").arg(what, version);
}

QString versions()
{
    const QString toolkit = QString::fromUtf8(SoDB::getVersion().getString()).section(' ', -1);
    return kTable + versionRow("Mirabo", MIRABO_VERSION) + versionRow("Kalmyr", toolkit)
           + versionRow("Qt", qVersion()) + "</table>";
}

QString libraries()
{
    QString rows;
    for (const Library& library : kLibraries)
        rows += QString("<tr><td>%1</td><td>%2</td><td>%3</td></tr>")
                    .arg(library.name, library.purpose, library.licence);
    return kTable + rows + "</table>";
}

QString text()
{
    return "<h2>Mirabo</h2>"
           "<p>Looks into the scene graph of a running 3D program, without stopping it: every "
           "node at every place where it occurs, every field with its value as it is now, and "
           "the picture that they make. What the program changes is seen while it changes.</p>"
           + versions()
           + "<p>Mirabo and Kalmyr, the scene-graph toolkit below it, are free software under the "
             "MIT licence. They come without any warranty.</p>"
             "<h4>With thanks to</h4>"
           + libraries();
}

} // namespace

AboutDialog::AboutDialog(QWidget* parent) : QDialog(parent)
{
    setWindowTitle(tr("About Mirabo"));
    auto* layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    auto* content = new QHBoxLayout;
    content->setSpacing(fontMetrics().height());
    layout->addLayout(content);
    auto* picture = new QLabel(this);
    picture->setPixmap(QIcon(":/Mirabo_icons/Icons/MiraboIcon.png").pixmap(kIconSize));
    picture->setAlignment(Qt::AlignTop);
    content->addWidget(picture);
    auto* label = new QLabel(text(), this);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->setFixedWidth(fontMetrics().averageCharWidth() * kTextWidth);
    content->addWidget(label, 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    buttons->button(QDialogButtonBox::Close)->setFocus();
}

} // namespace mirabo
