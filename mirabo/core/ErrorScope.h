#pragma once

#include <kalmyr/base/SoError.h>

#include <QString>

#include <type_traits>

namespace mirabo {

/// Installs the handler of an error class (SoError, SoReadError, ...) for a scope, and puts back
/// the one before, unless somebody else has installed another meanwhile. A class that used the
/// handler of its base class does so again afterwards.
template <class Error>
class ErrorScope {
public:
    ErrorScope(SoErrorCB* callback, void* data)
        : m_callback(callback),
          m_data(data),
          m_oldCallback(Error::getHandlerCallback()),
          m_oldData(Error::getHandlerData())
    {
        if constexpr (!std::is_same_v<Error, SoError>)
            if (m_oldCallback == SoError::getHandlerCallback()
                && m_oldData == SoError::getHandlerData())
                m_oldCallback = nullptr; // inherited
        Error::setHandlerCallback(callback, data);
    }
    ~ErrorScope()
    {
        if (Error::getHandlerCallback() == m_callback && Error::getHandlerData() == m_data)
            Error::setHandlerCallback(m_oldCallback, m_oldCallback ? m_oldData : nullptr);
    }
    ErrorScope(const ErrorScope&) = delete;
    ErrorScope& operator=(const ErrorScope&) = delete;

private:
    SoErrorCB* m_callback;
    void* m_data;
    SoErrorCB* m_oldCallback;
    void* m_oldData;
};

/// Keeps the text of the first error of a class that is posted in a scope: the cause of those that
/// follow. None of them is shown.
template <class Error>
class FirstError {
public:
    /// Empty when nothing was posted.
    const QString& text() const { return m_text; }

private:
    static void posted(const SoError* error, void* data)
    {
        QString& text = static_cast<FirstError*>(data)->m_text;
        if (text.isEmpty())
            text = QString::fromUtf8(error->getPrintedText().getString());
    }

    QString m_text;
    ErrorScope<Error> m_scope{&FirstError::posted, this};
};

} // namespace mirabo
