#pragma once

#include "mirabo/extender/private/Frame.h"

#include <QDialog>
#include <QDrag>
#include <QMenu>
#include <QPointer>

#include <memory>
#include <optional>

namespace mirabo {

/// Base of all modal loops, which are open at the same time, one inside the other.
class ModalBase {
public:
    /// Ends the loops of all that are open; each run() returns nothing once its turn comes.
    static void closeAll();

protected:
    ModalBase();
    ~ModalBase();
    ModalBase(const ModalBase&) = delete;
    ModalBase& operator=(const ModalBase&) = delete;

    static void prepare(QWidget* widget);
    bool isDismissed() const { return m_dismissed || Frame::isEnding(); }

private:
    virtual void close() = 0;

    const Frame m_frame; // First: what is destroyed here is still inside.
    ModalBase* const m_outer;
    bool m_dismissed = false;
};

/// The one way to run a dialog, a box or a menu in a loop of its own.
///
///     mirabo::Modal<QFileDialog> dialog(new QFileDialog(m_frame));
///     if (dialog.run() != QDialog::Accepted)
///         return;
///     open(dialog->selectedFiles());
///
/// The widget is owned here, on the heap. The host may delete its parent, or end the tool, while
/// the loop runs: run() returns nothing then, and the caller returns at once. While a Modal exists
/// the tool is not torn down, but its main window may be gone behind it.
template <class Widget>
class Modal final : public ModalBase {
public:
    explicit Modal(Widget* widget) : m_widget(widget) { prepare(widget); }
    ~Modal() { delete m_widget.data(); }

    Widget* operator->() const { return m_widget; }

    /// Runs the loop and returns the result of exec(); nothing when the widget died or the tool
    /// ends.
    std::optional<int> run()
    {
        if (isDismissed())
            return std::nullopt;
        const int result = m_widget->exec();
        if (!m_widget || isDismissed())
            return std::nullopt;
        return result;
    }

private:
    void close() override
    {
        if (QDialog* dialog = m_widget)
            dialog->done(QDialog::Rejected);
    }

    QPointer<Widget> m_widget; ///< owned, unless its parent deleted it
};

/// A menu. What was chosen has been triggered when run() returns.
template <>
class Modal<QMenu> final : public ModalBase {
public:
    explicit Modal(QWidget* parent);
    ~Modal();

    QMenu* get() const { return m_menu; }
    QMenu* operator->() const { return m_menu; }
    void run(const QPoint& globalPosition);

private:
    void close() override;

    QPointer<QMenu> m_menu; ///< owned, unless its parent deleted it
};

/// A drag, whose source need not live as long as it.
template <>
class Modal<QDrag> final : public ModalBase {
public:
    Modal();
    ~Modal();

    QDrag* operator->() const { return m_drag; }
    void run(Qt::DropActions actions);

private:
    void close() override;

    std::unique_ptr<QObject> m_source;
    QPointer<QDrag> m_drag; ///< the source's
};

} // namespace mirabo
