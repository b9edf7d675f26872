#include "mirabo/viewer/RecoveryCopy.h"

#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/viewer/RecoveryPlace.h"

#include <kalmyr/base/SbTime.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoSlicedWrite.h>

#include <QEvent>
#include <QGuiApplication>

#include <chrono>
#include <future>
#include <initializer_list>
#include <utility>

namespace mirabo {

namespace {

constexpr int kIdleMs = 2000;
constexpr int kBetweenMs = 12;
const SbTime kSlice(0.003);
constexpr double kQuiet = 0.5; // seconds since the last key or button

bool isInput(const QEvent& event)
{
    switch (event.type()) {
    case QEvent::KeyPress:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::Wheel:
    case QEvent::TouchUpdate:
        return true;
    default:
        return false;
    }
}

} // namespace

/// One copy on its way to the disk.
class RecoveryCopy::Writing {
public:
    /// False when the file cannot be created.
    bool begin(const SceneWriter::Content& scene, const QString& path)
    {
        if (!m_output->openFile(path.toUtf8().constData()))
            return false;
        m_write = std::make_unique<SoSlicedWrite>(scene.node.get(), m_output.get());
        m_write->setRootWritten(!scene.childrenOnly);
        return true;
    }
    SoSlicedWrite::State run() { return m_write->run(kSlice); }
    /// The graph is not needed any more. Reaching the disk may take long.
    void close()
    {
        m_write.reset();
        m_closed =
            std::async(std::launch::async, [output = m_output] { return output->closeFile(); });
    }
    bool isClosing() const { return m_closed.valid(); }
    bool isClosed() const
    {
        return m_closed.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    }
    bool result() { return m_closed.get(); }

private:
    std::shared_ptr<SoOutput> m_output = std::make_shared<SoOutput>();
    std::unique_ptr<SoSlicedWrite> m_write; ///< before the output
    std::future<bool> m_closed;
};

RecoveryCopy::RecoveryCopy(Document document, const QString& folder, QObject* parent)
    : QObject(parent), m_document(std::move(document)), m_folder(folder)
{
    for (QTimer* timer : {&m_idle, &m_slices})
        timer->setParent(this);
    m_idle.setObjectName("recoveryIdle");
    m_idle.setSingleShot(true);
    m_idle.setInterval(kIdleMs);
    m_slices.setObjectName("recoverySlices");
    m_slices.setInterval(kBetweenMs);
    connect(&m_idle, &QTimer::timeout, this, &RecoveryCopy::begin);
    connect(&m_slices, &QTimer::timeout, this, &RecoveryCopy::goOn);
    qApp->installEventFilter(this);
}

RecoveryCopy::~RecoveryCopy()
{
    cancel();
    m_writing.reset(); // waits for a copy on its way
    if (m_place)
        m_place->clear();
}

bool RecoveryCopy::eventFilter(QObject*, QEvent* event)
{
    if (isInput(*event))
        m_lastInput = SbTime::monotonic().getValue();
    return false;
}

bool RecoveryCopy::isUserBusy() const
{
    return QGuiApplication::mouseButtons() != Qt::NoButton
           || SbTime::monotonic().getValue() - m_lastInput < kQuiet;
}

/// Lets a file that is being closed go on: nobody waits for the disk, and it is a copy as well.
void RecoveryCopy::cancel()
{
    m_idle.stop();
    if (!m_writing || m_writing->isClosing())
        return;
    m_slices.stop();
    const GraphReading graph; // nodes may be released
    m_writing.reset();
}

void RecoveryCopy::removeCopy()
{
    if (m_place && !m_writing)
        m_place->clear();
}

void RecoveryCopy::documentChanged()
{
    cancel();
    m_isUpToDate = false;
    if (m_document.isUnsaved())
        m_idle.start();
    else
        removeCopy();
}

void RecoveryCopy::adopt(std::unique_ptr<RecoveryPlace> place)
{
    cancel();
    m_place = std::move(place);
    m_isUpToDate = true;
}

void RecoveryCopy::begin()
{
    if (m_writing) {
        m_idle.start(); // the one before has not reached the disk yet
        return;
    }
    const SceneWriter::Content scene = m_document.scene();
    if (!scene.node || !m_document.isUnsaved())
        return;
    if (!m_place)
        m_place = RecoveryPlace::create(m_folder);
    m_writing = std::make_unique<Writing>();
    const GraphReading graph;
    if (!graph)
        m_idle.start(); // another thread edits
    else if (m_place && m_writing->begin(scene, m_place->scenePath()))
        m_slices.start();
    else
        finish(false);
}

void RecoveryCopy::goOn()
{
    if (m_writing->isClosing()) {
        if (m_writing->isClosed())
            finish(m_writing->result());
        return;
    }
    if (isUserBusy())
        return;
    const GraphReading graph;
    if (graph && m_writing->run() != SoSlicedWrite::RUNNING)
        m_writing->close();
}

void RecoveryCopy::finish(bool isWritten)
{
    m_slices.stop();
    m_writing.reset();
    if (!m_document.isUnsaved()) {
        removeCopy();
        return;
    }
    if (!isWritten) {
        if (!std::exchange(m_hasFailed, true))
            Q_EMIT failed();
        return;
    }
    m_hasFailed = false;
    m_isUpToDate = !m_idle.isActive();
    m_place->setDescription(m_document.file());
    Q_EMIT written();
}

} // namespace mirabo
