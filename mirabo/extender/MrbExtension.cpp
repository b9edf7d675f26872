#include "mirabo/extender/MrbExtension.h"

#include "mirabo/extender/private/HostedExtension.h"

#include <kalmyr/base/SoError.h>

#include <QThread>

#include <exception>

namespace {

/// Runs the code and returns the text of its exception; null when there was none.
QString causeOf(const char* what, const std::function<void()>& code)
{
    try {
        code();
        return {};
    } catch (const std::exception& error) {
        return QString("%1 threw: %2").arg(what, QString::fromLocal8Bit(error.what()));
    } catch (...) {
        return QString("%1 threw an exception of unknown type").arg(what);
    }
}

} // namespace

MrbExtension::MrbExtension() = default;
MrbExtension::~MrbExtension() = default;

QWidget* MrbExtension::createView(QWidget*)
{
    return nullptr;
}

MrbPreferencePage* MrbExtension::createPreferencePage(QWidget*)
{
    return nullptr;
}

void MrbExtension::addControlled(MrbExtension*) {}
void MrbExtension::removeControlled(MrbExtension*) {}

MrbServices* MrbExtension::services() const
{
    return m_host ? m_host->services() : nullptr;
}

MrbShell* MrbExtension::shell() const
{
    return m_host ? m_host->shell() : nullptr;
}

void MrbExtension::runGuarded(const char* what, const std::function<void()>& code)
{
    const bool isOwnThread = QThread::currentThread() == thread();
    if (isOwnThread && m_host) {
        if (!m_host->isFailed())
            m_host->run(what, code);
        return;
    }
    const QString cause = causeOf(what, code);
    if (cause.isNull())
        return;
    if (isOwnThread) // nobody runs it
        SoError::post("Mirabo: an extension: %s", cause.toUtf8().constData());
    else
        QMetaObject::invokeMethod(
            this, [this, cause] { fail(cause); }, Qt::QueuedConnection);
}

MrbSensorGuard::MrbSensorGuard(MrbExtension* extension, Code code)
    : m_extension(extension), m_code(std::move(code))
{
}

MrbSensorGuard::~MrbSensorGuard() = default;

void MrbSensorGuard::call(void* guard, SoSensor* sensor)
{
    const auto* self = static_cast<MrbSensorGuard*>(guard);
    if (!self->m_extension)
        return;
    // A sensor may be deleted, and the guard with it, from within its callback.
    const Code code = self->m_code;
    self->m_extension->runGuarded("a sensor callback", [&] { code(sensor); });
}

void MrbExtension::fail(const QString& cause)
{
    if (m_host)
        m_host->fail(cause);
}
