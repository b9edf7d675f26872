#pragma once

#include <kalmyr/base/SoReadError.h>

namespace mirabo {

/// Installs a read-error handler for a scope and puts the old one back.
class ReadErrorScope {
public:
    ReadErrorScope(SoErrorCB* handler, void* data)
        : m_oldHandler(SoReadError::getHandlerCallback()), m_oldData(SoReadError::getHandlerData())
    {
        SoReadError::setHandlerCallback(handler, data);
    }
    ~ReadErrorScope() { SoReadError::setHandlerCallback(m_oldHandler, m_oldData); }
    ReadErrorScope(const ReadErrorScope&) = delete;
    ReadErrorScope& operator=(const ReadErrorScope&) = delete;

private:
    SoErrorCB* m_oldHandler;
    void* m_oldData;
};

} // namespace mirabo
