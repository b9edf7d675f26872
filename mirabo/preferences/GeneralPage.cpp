#include "mirabo/preferences/GeneralPage.h"

#include "mirabo/preferences/Settings.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QUrl>
#include <QVBoxLayout>

#include <utility>

namespace mirabo {

GeneralPage::GeneralPage(bool standalone, QWidget* parent)
    : QWidget(parent),
      m_address(new QLineEdit(this)),
      m_problem(new QLabel(this)),
      m_window(new QCheckBox(tr("Place, size and &layout of the window"), this)),
      m_bookmarks(new QCheckBox(tr("&Bookmarks of a scene"), this)),
      m_file(new QCheckBox(tr("The &file that was open last"), this))
{
    m_address->setObjectName("m_documentationAddress");
    m_address->setToolTip(tr("Server of the reference pages that F1 and \"Contents\" open"));
    m_problem->setWordWrap(true);
    m_window->setObjectName("m_restoreWindow");
    m_bookmarks->setObjectName("m_restoreBookmarks");
    m_file->setObjectName("m_restoreFile");
    m_file->setVisible(standalone);

    auto* documentation = new QGroupBox(tr("Documentation"), this);
    auto* lines = new QVBoxLayout(documentation);
    auto* label = new QLabel(tr("&Address of the reference pages:"), documentation);
    label->setBuddy(m_address);
    for (QWidget* part : std::initializer_list<QWidget*>{label, m_address, m_problem})
        lines->addWidget(part);
    auto* start = new QGroupBox(tr("Restored at Start"), this);
    lines = new QVBoxLayout(start);
    for (QCheckBox* box : {m_window, m_bookmarks, m_file})
        lines->addWidget(box);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(documentation);
    layout->addWidget(start);
    layout->addStretch();
    connect(m_address, &QLineEdit::textChanged, this, &GeneralPage::checkAddress);
}

void GeneralPage::checkAddress()
{
    const QString text = m_address->text().trimmed();
    const QUrl url(text, QUrl::StrictMode);
    const bool isAddress = text.isEmpty() || (url.isValid() && !url.isRelative());
    m_problem->setText(isAddress ? QString()
                                 : tr("This is no address; the standard one will be used."));
}

GeneralPage::Choices GeneralPage::choices() const
{
    return {m_address->text().trimmed(), m_window->isChecked(), m_bookmarks->isChecked(),
            m_file->isChecked()};
}

void GeneralPage::load()
{
    m_address->setText(readDocumentationAddress());
    m_window->setChecked(readRestoreWindow());
    m_bookmarks->setChecked(readRestoreBookmarks());
    m_file->setChecked(readRestoreFile());
    m_loaded = choices();
}

void GeneralPage::save()
{
    const Choices chosen = choices();
    if (std::exchange(m_loaded, chosen) == chosen)
        return; // another tool may have changed it
    const SettingsChange change;
    writeDocumentationAddress(m_address->text().trimmed());
    writeRestoreWindow(m_window->isChecked());
    writeRestoreBookmarks(m_bookmarks->isChecked());
    writeRestoreFile(m_file->isChecked());
}

MrbPluginsManager::PreferencePage GeneralPage::asPage()
{
    return {tr("General"), this, [this] { load(); }, [this] { save(); }};
}

} // namespace mirabo
