#include <kalmyr/qt/SoQt.h>

#include <kalmyr/base/SbString.h>
#include <kalmyr/base/SbTime.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/gui/SoGuiInit.h>
#include <kalmyr/io/SoReadLock.h>
#include <kalmyr/sensors/SoSensorManager.h>

#include <QApplication>
#include <QPointer>
#include <QThread>
#include <QTimer>
#include <QWidget>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <memory>
#include <vector>

namespace {

/// Longest sleep of the timer; a day off is looked at again then.
constexpr double kMaxSleepSeconds = 3600;
/// Until the next try when another thread is editing.
constexpr int kRetryMilliseconds = 2;

/// The event loop's side of the sensor queues. Dies with finish(), or with the application object.
class SensorPump final : public QObject {
public:
    explicit SensorPump(QObject* application);
    ~SensorPump() override { stop(); }

    void serve();
    /// Lets the queues go and deletes itself later: it may be one of its sensors that asks for it.
    void retire();

private:
    static void queuesChanged(void* data);
    void arm();
    void armLater(int milliseconds);
    void stop();
    void serveIdle();

    QTimer m_now;                       ///< the delay queue has something
    QTimer m_idle;                      ///< there are idle sensors, and nothing else at hand
    QTimer m_later;                     ///< the next timer sensor
    std::atomic<bool> m_posted = false; ///< another thread woke us up
    bool m_serving = false;
    bool m_stopped = false;
};

struct Binding {
    std::vector<QPointer<QWidget>> topLevels; // one for each init(), not owned
    QPointer<SensorPump> pump;                // Owned, by the application as well.
    std::unique_ptr<QApplication> application;
    QPointer<QWidget> ownTopLevel; // Owned.
};

Binding& binding()
{
    static auto* const data = new Binding; // an application may outlive the statics of this library
    return *data;
}

SensorPump::SensorPump(QObject* application) : QObject(application)
{
    for (QTimer* timer : {&m_now, &m_idle, &m_later})
        timer->setSingleShot(true);
    m_later.setTimerType(Qt::PreciseTimer);
    connect(&m_now, &QTimer::timeout, this, &SensorPump::serve);
    connect(&m_later, &QTimer::timeout, this, &SensorPump::serve);
    connect(&m_idle, &QTimer::timeout, this, &SensorPump::serveIdle);
    SoSensorManager::setChangedCallback(&SensorPump::queuesChanged, this);
    arm();
}

/// Called in any thread, under locks: other threads only post, and not again before it has arrived.
void SensorPump::queuesChanged(void* data)
{
    auto* self = static_cast<SensorPump*>(data);
    if (QThread::currentThread() == self->thread()) {
        self->arm();
        return;
    }
    if (self->m_posted.exchange(true))
        return;
    QMetaObject::invokeMethod(
        self,
        [self] {
            self->m_posted = false;
            self->arm();
        },
        Qt::QueuedConnection);
}

void SensorPump::armLater(int milliseconds)
{
    if (!m_now.isActive())
        m_now.start(milliseconds);
}

void SensorPump::stop()
{
    if (m_stopped)
        return; // the queues may have another pump by now
    m_stopped = true;
    SoSensorManager::setChangedCallback(nullptr, nullptr);
    for (QTimer* timer : {&m_now, &m_idle, &m_later})
        timer->stop();
}

void SensorPump::retire()
{
    stop();
    deleteLater();
}

void SensorPump::arm()
{
    if (m_serving || m_stopped)
        return; // while serving: done at the end
    if (SoSensorManager::isDelaySensorPending()) {
        armLater(0);
    } else if (SoSensorManager::isIdleSensorPending() && !m_idle.isActive()) {
        m_idle.start(0);
    }
    SbTime next;
    if (!SoSensorManager::isTimerSensorPending(next)) {
        m_later.stop();
        return;
    }
    const double wait =
        std::clamp((next - SbTime::getTimeOfDay()).getValue(), 0.0, kMaxSleepSeconds);
    m_later.start(static_cast<int>(std::ceil(wait * 1000)));
}

void SensorPump::serve()
{
    // A callback that opens a dialog lands here again: the queues are being walked.
    if (m_serving || m_stopped)
        return;
    const SoReadLock graph(std::try_to_lock); // not waiting: an editor may wait for us
    if (!graph) {
        armLater(kRetryMilliseconds);
        return;
    }
    const QPointer<SensorPump> self(this); // a callback may end the application
    m_serving = true;
    SoSensorManager::processTimerQueue();
    if (self && !m_stopped)
        SoSensorManager::processDelayQueue(false);
    if (!self)
        return;
    m_serving = false;
    arm();
}

void SensorPump::serveIdle()
{
    const SoReadLock graph(std::try_to_lock); // not waiting: an editor may wait for us
    if (!graph) {
        armLater(kRetryMilliseconds);
        return;
    }
    if (m_serving || SoSensorManager::isDelaySensorPending()) {
        arm();
        return;
    }
    const QPointer<SensorPump> self(this);
    m_serving = true;
    SoSensorManager::processDelayQueue(true);
    if (!self)
        return;
    m_serving = false;
    arm();
}

void startPump()
{
    QCoreApplication* application = QCoreApplication::instance();
    if (!application) {
        SoDebugError::post("SoQt::init", "there is no application object: sensors are not served");
        return;
    }
    if (!binding().pump)
        binding().pump = new SensorPump(application);
}

} // namespace

void SoQt::init(QWidget* topLevel)
{
    kalmyr::initGui();
    binding().topLevels.emplace_back(topLevel);
    startPump();
}

QWidget* SoQt::init(int& argc, char** argv, const char* name)
{
    Binding& data = binding();
    if (const SbString cause = whyNoDisplay(argc, argv); !cause.isEmpty()) {
        SoDebugError::post("SoQt::init", "%s", cause.getString());
        return nullptr;
    }
    if (!QCoreApplication::instance())
        data.application = std::make_unique<QApplication>(argc, argv);
    if (!data.ownTopLevel)
        data.ownTopLevel = new QWidget;
    data.ownTopLevel->setWindowTitle(QString::fromUtf8(name));
    init(data.ownTopLevel);
    return data.ownTopLevel;
}

void SoQt::finish()
{
    Binding& data = binding();
    if (data.topLevels.empty())
        return;
    data.topLevels.pop_back();
    if (!data.topLevels.empty())
        return;
    if (data.pump)
        data.pump->retire();
    data.pump.clear();
    delete data.ownTopLevel;
    data.application.reset();
}

bool SoQt::isInitialized()
{
    return !binding().topLevels.empty();
}

QWidget* SoQt::getTopLevelWidget()
{
    const auto& all = binding().topLevels;
    const auto last =
        std::find_if(all.rbegin(), all.rend(), [](const auto& widget) { return !widget.isNull(); });
    return last == all.rend() ? nullptr : last->data();
}

void SoQt::show(QWidget* widget)
{
    if (!widget)
        return;
    widget->show();
    widget->raise();
    widget->activateWindow();
}

void SoQt::hide(QWidget* widget)
{
    if (widget)
        widget->hide();
}

int SoQt::mainLoop()
{
    return QCoreApplication::instance() ? QCoreApplication::exec() : 1;
}

void SoQt::exitMainLoop(int code)
{
    QCoreApplication::exit(code);
}

void SoQt::processSensors()
{
    if (binding().pump)
        binding().pump->serve();
}
