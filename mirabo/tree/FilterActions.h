#pragma once

#include <QObject>
#include <QPointer>

class MrbFilterDialog;
class SoCommandManager;
class SoMiraboMainFrame;
class SoMiraboTreeView;

namespace mirabo {

/// The filter of the tree as the window offers it: the toggle, the categories, and the dialog,
/// which all show the same choice.
class FilterActions final : public QObject {
    Q_OBJECT

public:
    /// The tree owns it. Whatever the window has checked already is in force at once.
    FilterActions(SoMiraboTreeView* tree, SoMiraboMainFrame* frame, SoCommandManager* hub);
    ~FilterActions() override;

    /// Null before it is opened for the first time.
    MrbFilterDialog* dialog() const;

private:
    void registerActions();
    void open();
    void setOpen(bool on);
    void fillDialog();

    SoMiraboTreeView* m_tree; // Not owned; owns us.
    QPointer<SoMiraboMainFrame> m_frame;
    QPointer<SoCommandManager> m_hub;
    QPointer<MrbFilterDialog> m_dialog;
};

} // namespace mirabo
