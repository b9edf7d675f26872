#include "mirabo/core/AboutDialog.h"

#include <kalmyr/io/SoDB.h>

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace mirabo {

namespace {

QString text()
{
    return QString("<h2>Mirabo</h2>"
                   "<p>The live scene-graph inspector.</p>"
                   "<p>Shows the scene graph of a running 3D application as it is now: its nodes, "
                   "their fields and values, and what they draw.</p>"
                   "<table cellspacing=\"4\">"
                   "<tr><td>Toolkit</td><td>%1</td></tr>"
                   "<tr><td>User interface</td><td>Qt %2</td></tr>"
                   "<tr><td>Licence</td><td>MIT</td></tr></table>")
        .arg(QString::fromUtf8(SoDB::getVersion().getString()), qVersion());
}

} // namespace

AboutDialog::AboutDialog(QWidget* parent) : QDialog(parent)
{
    setWindowTitle(tr("About Mirabo"));
    auto* layout = new QVBoxLayout(this);
    auto* content = new QHBoxLayout;
    layout->addLayout(content);
    auto* picture = new QLabel(this);
    picture->setPixmap(QPixmap(":/Mirabo_icons/Icons/MiraboIcon.png")
                           .scaled(96, 96, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    picture->setAlignment(Qt::AlignTop);
    content->addWidget(picture);
    auto* label = new QLabel(text(), this);
    label->setWordWrap(true);
    label->setMinimumWidth(fontMetrics().averageCharWidth() * 50);
    content->addWidget(label, 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
}

} // namespace mirabo
