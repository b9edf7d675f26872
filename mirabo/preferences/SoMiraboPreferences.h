#pragma once

#include "mirabo/extender/MrbPluginsManager.h"
#include "mirabo/preferences/PageSearch.h"

#include <QDialog>

#include <memory>
#include <vector>

class QListWidgetItem;

namespace Ui {
class QPreferences;
}

/// The preferences dialog: a list of pages on the left, the chosen page on the right, and a field
/// to search all of them in. Pages load their values when they are added; OK and Apply have all of
/// them save, Cancel has none.
class SoMiraboPreferences final : public QDialog {
    Q_OBJECT

public:
    using Page = MrbPluginsManager::PreferencePage;

    explicit SoMiraboPreferences(QWidget* parent = nullptr);
    ~SoMiraboPreferences() override;

    /// Adds a page behind the others; one without a widget is left out. The widget becomes the
    /// dialog's. A page whose widget dies leaves the dialog.
    void addPage(const Page& page);
    int getPageCount() const { return static_cast<int>(m_pages.size()); }

    void setVisible(bool visible) override;

public Q_SLOTS:
    void raiseWidget(QListWidgetItem* current, QListWidgetItem* previous);
    /// Lists only the pages that have the words of a text, and marks where; empty: all.
    void search(const QString& text);

Q_SIGNALS:
    /// Every page is to load its values anew.
    void emitInit();
    /// All pages have saved their values.
    void saved();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void save();
    void dropPage(QObject* widget);
    bool isListed(int row) const;
    void markCurrent();
    void fitList();
    void fitPages();

    std::unique_ptr<Ui::QPreferences> m_form;
    std::vector<Page> m_pages;
    mirabo::PageSearch m_search;
};
