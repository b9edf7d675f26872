#pragma once

#include <kalmyr/base/SoError.h>

/// Somebody called a function wrongly, or something is worth a developer's notice.
class KALMYRBASE_API SoDebugError final : public SoError {
public:
    enum Severity { SEV_ERROR, SEV_WARNING, SEV_INFO };

    /// `source` names the function or class that complains.
    static void post(const char* source, const char* pattern, ...) KALMYR_PRINTF(2, 3);
    static void postWarning(const char* source, const char* pattern, ...) KALMYR_PRINTF(2, 3);
    static void postInfo(const char* source, const char* pattern, ...) KALMYR_PRINTF(2, 3);

    static void setHandlerCallback(SoErrorCB* callback, void* userData = nullptr);
    static SoErrorCB* getHandlerCallback();
    static void* getHandlerData();

    Severity getSeverity() const { return m_severity; }
    const SbString& getSource() const { return m_source; }
    const char* getTypeName() const override;
    SbString getPrintedText() const override;

private:
    static kalmyr::detail::ErrorHandlerSlot& slot();
    SoDebugError(Severity severity, const char* source, SbString text);
    static void send(Severity severity, const char* source, const char* pattern,
                     std::va_list arguments);

    Severity m_severity;
    SbString m_source;
};
