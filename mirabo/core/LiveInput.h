#pragma once

#include "mirabo/core/ProgressBox.h"

#include <kalmyr/io/SoInput.h>

class QWidget;

namespace mirabo {
class ReadMessages;
}

/// A scene input that shows how far reading has come, in a dialog that keeps the window alive and
/// cannot be cancelled.
class LiveInput final : public SoInput {
public:
    explicit LiveInput(QWidget* parent);
    ~LiveInput() override;

    void progress(std::size_t bytesRead, std::size_t total) override;
    void warn(const SbString& fileName, int line, int column, const SbString& text) override;

    /// Warnings are added to a list that outlives the reading; null: to none.
    void setMessages(mirabo::ReadMessages* messages) { m_messages = messages; }

private:
    mirabo::ProgressBox m_box;
    mirabo::ReadMessages* m_messages = nullptr; // Not owned.
};
