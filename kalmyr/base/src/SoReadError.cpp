#include <kalmyr/base/SoReadError.h>

#include <utility>

SoReadError::SoReadError(const SbString& fileName, int line, int column, SbString message)
    : SoError(SbString()),
      m_fileName(fileName),
      m_message(std::move(message)),
      m_line(line),
      m_column(column)
{
    m_text = fileName.isEmpty() ? SbString("<memory>") : fileName;
    if (line > 0) {
        m_text += ":" + SbString(line) + ":" + SbString(column);
    }
    m_text += ": error: " + m_message;
}

void SoReadError::post(const SbString& fileName, int line, int column, const char* pattern, ...)
{
    std::va_list arguments;
    va_start(arguments, pattern);
    const SoReadError error(fileName, line, column,
                            kalmyr::detail::formatArguments(pattern, arguments));
    va_end(arguments);
    error.handle(slot());
}

SbString SoReadError::getPrintedText() const
{
    return m_text;
}

kalmyr::detail::ErrorHandlerSlot& SoReadError::slot()
{
    static kalmyr::detail::ErrorHandlerSlot s_slot(&baseSlot());
    return s_slot;
}

void SoReadError::setHandlerCallback(SoErrorCB* callback, void* userData)
{
    slot().set(callback, userData);
}

SoErrorCB* SoReadError::getHandlerCallback()
{
    void* userData = nullptr;
    return slot().get(userData);
}

void* SoReadError::getHandlerData()
{
    void* userData = nullptr;
    slot().get(userData);
    return userData;
}

const char* SoReadError::getTypeName() const
{
    return "SoReadError";
}
