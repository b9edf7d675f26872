#pragma once

#include <kalmyr/base/SoError.h>

#include <QString>

#include <thread>
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

    /// Gives an error to the handler that was in force before.
    void passOn(const SoError* error) const
    {
        if (m_oldCallback)
            m_oldCallback(error, m_oldData);
        else
            SoError::getHandlerCallback()(error, SoError::getHandlerData());
    }

private:
    SoErrorCB* m_callback;
    void* m_data;
    SoErrorCB* m_oldCallback;
    void* m_oldData;
};

/// The same for errors that the thread of the scope posts. Those of other threads, which have
/// nothing to do with what it tries, go to the handler before.
template <class Error>
class ThreadErrorScope {
public:
    ThreadErrorScope(SoErrorCB* callback, void* data) : m_callback(callback), m_data(data) {}

private:
    static void posted(const SoError* error, void* data)
    {
        const auto* self = static_cast<ThreadErrorScope*>(data);
        if (std::this_thread::get_id() == self->m_thread)
            self->m_callback(error, self->m_data);
        else
            self->m_scope.passOn(error);
    }

    SoErrorCB* m_callback;
    void* m_data;
    std::thread::id m_thread = std::this_thread::get_id();
    ErrorScope<Error> m_scope{&ThreadErrorScope::posted, this};
};

/// Keeps the text of the first error of a class that this thread posts in a scope: the cause of
/// those that follow. None of them is shown.
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
    ThreadErrorScope<Error> m_scope{&FirstError::posted, this};
};

} // namespace mirabo
