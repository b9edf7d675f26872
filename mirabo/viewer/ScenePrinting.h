#pragma once

#include <QImage>
#include <QMainWindow>
#include <QString>

#include <functional>

namespace mirabo {

/// Prints the picture that the view shows, in its own size, one point of the picture for one of the
/// screen. The status bar tells how it ended.
class ScenePrinting {
public:
    /// Each function returns the present value; the window is null once it has gone.
    struct Document {
        std::function<QMainWindow*()> window;
        std::function<QString()> file; ///< empty without one
    };

    explicit ScenePrinting(Document document) : m_document(std::move(document)) {}

    /// Draws the scene as it is now, and asks for the printer.
    void run();

private:
    void tell(const QString& text) const;

    Document m_document;
};

} // namespace mirabo
