#pragma once

#include <QListView>
#include <QPointer>

class SoCommandManager;

namespace mirabo {

class HistoryModel;

/// The undo stack as a list, oldest command first, below a first row for the scene before all of
/// them. What is undone is grey; the last executed command is bold. Choosing a row, by a click or
/// Return, undoes or redoes up to it.
///
/// While it is hidden it costs nothing.
class HistoryList final : public QListView {
    Q_OBJECT

public:
    /// The hub is not owned, and may die first.
    explicit HistoryList(SoCommandManager* hub, QWidget* parent = nullptr);
    ~HistoryList() override;

protected:
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void refresh();
    void choose(const QModelIndex& index);

    QPointer<SoCommandManager> m_hub;
    HistoryModel* m_model; // Owned.
};

} // namespace mirabo
