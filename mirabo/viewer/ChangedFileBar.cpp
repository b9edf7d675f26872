#include "mirabo/viewer/ChangedFileBar.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMainWindow>
#include <QPushButton>
#include <QStyle>

namespace mirabo {

ChangedFileBar::ChangedFileBar(QMainWindow* window, const QString& fileName, bool isDeleted)
    : QToolBar(tr("Changed File"), window), m_window(window)
{
    setObjectName("ChangedFileBar");
    setMovable(false);
    setContextMenuPolicy(Qt::PreventContextMenu);
    toggleViewAction()->setVisible(false);
    auto* content = new QWidget; // a tool bar gives its widgets no room beyond their wishes
    content->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    auto* row = new QHBoxLayout(content);
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize);
    row->setContentsMargins(size / 4, 0, size / 4, 0);
    auto* icon = new QLabel;
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(size));
    row->addWidget(icon);
    const QString name = QFileInfo(fileName).fileName();
    auto* text = new QLabel(isDeleted ? tr("%1 was deleted by another program.").arg(name)
                                      : tr("%1 was changed by another program.").arg(name));
    text->setTextFormat(Qt::PlainText);
    text->setToolTip(fileName);
    text->setMinimumWidth(1); // a narrow window shows its beginning
    row->addWidget(text, 1);
    const auto addButton = [this, row](const QString& label, const QString& hint, auto signal) {
        auto* button = new QPushButton(label);
        button->setToolTip(hint);
        row->addWidget(button);
        connect(button, &QPushButton::clicked, this, signal);
    };
    if (!isDeleted)
        addButton(tr("Reload"), tr("Reads the file; what was not saved is asked about"),
                  &ChangedFileBar::reloadRequested);
    addButton(tr("Keep"), tr("Leaves the scene as it is; saving it replaces the file"),
              &ChangedFileBar::keepRequested);
    addWidget(content);
    window->addToolBarBreak();
    window->addToolBar(this);
}

void ChangedFileBar::remove()
{
    m_window->removeToolBarBreak(this);
    m_window->removeToolBar(this);
    setParent(nullptr);
    deleteLater();
}

} // namespace mirabo
