#pragma once

#include "mirabo/extender/MrbPluginsManager.h"

#include <QDialog>

#include <vector>

class QListWidget;
class QListWidgetItem;
class QPushButton;
class QStackedWidget;

/// The preferences dialog: a list of pages on the left, the chosen page on the right. Pages load
/// their values when they are added; OK and Apply have all of them save, Cancel has none.
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

public Q_SLOTS:
    void raiseWidget(QListWidgetItem* current, QListWidgetItem* previous);

Q_SIGNALS:
    /// All pages have saved their values: the views take them over.
    void saved();

private:
    QPushButton* addButton(const char* name, const QString& text);
    void save();
    void dropPage(QObject* widget);

    std::vector<Page> m_pages;
    QListWidget* m_list;
    QStackedWidget* m_stack;
    QPushButton* m_apply;
};
