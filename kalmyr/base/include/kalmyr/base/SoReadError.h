#pragma once

#include <kalmyr/base/SoError.h>

/// A file could not be read, with the place of the trouble.
/// The text is `FILE:LINE:COLUMN: error: MESSAGE`, or `FILE: error: MESSAGE` without a line.
class KALMYRBASE_API SoReadError final : public SoError {
public:
    /// Lines and columns count from 1; 0 means unknown. An empty file name stands for memory and
    /// shows as "<memory>".
    static void post(const SbString& fileName, int line, int column, const char* pattern, ...)
        KALMYR_PRINTF(4, 5);

    static void setHandlerCallback(SoErrorCB* callback, void* userData = nullptr);
    static SoErrorCB* getHandlerCallback();
    static void* getHandlerData();

    const SbString& getFileName() const { return m_fileName; }
    int getLine() const { return m_line; }
    int getColumn() const { return m_column; }
    /// The message without the place.
    const SbString& getMessage() const { return m_message; }
    const char* getTypeName() const override;
    SbString getPrintedText() const override;

private:
    static kalmyr::detail::ErrorHandlerSlot& slot();
    SoReadError(const SbString& fileName, int line, int column, SbString message);

    SbString m_fileName;
    SbString m_message;
    int m_line;
    int m_column;
};
