#include <kalmyr/vrml/SoVRMLMovieTexture.h>

#include "LocalUrl.h"

#include <kalmyr/base/SbTime.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/core/SoImageFile.h>
#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

#include "core/CacheLock.h"
#include "core/MovieFile.h"
#include "core/Threads.h"

#include <algorithm>
#include <cmath>

struct SoVRMLMovieTexture::Film {
    std::vector<SbString> urls; ///< that it belongs to
    std::vector<kalmyr::detail::MovieFrame> frames;
    double seconds = -1; ///< in all; -1: there is no film
};

namespace {

constexpr double kTickInterval = 0.02;
constexpr int kSignSize = 64;
/// Ticks after which a film that nobody draws stops its clock.
constexpr int kMaxTicksUnseen = 50;

/// A triangle in a dark frame, as on the key that starts a film.
SbImage makeSign()
{
    SbImage image(SbVec2i32(kSignSize, kSignSize), 3);
    unsigned char* at = image.edit();
    for (int y = 0; y < kSignSize; ++y) {
        for (int x = 0; x < kSignSize; ++x, at += 3) {
            const int fromMiddle = std::abs(2 * y + 1 - kSignSize);
            const bool isSign = x >= 20 && x < 48 && fromMiddle * 14 < (48 - x) * 16;
            const bool isFrame = std::min({x, y, kSignSize - 1 - x, kSignSize - 1 - y}) < 4;
            std::fill_n(at, 3, static_cast<unsigned char>(isSign ? 255 : isFrame ? 40 : 110));
        }
    }
    return image;
}

} // namespace

SO_NODE_SOURCE(SoVRMLMovieTexture)

SoVRMLMovieTexture::SoVRMLMovieTexture()
    : m_timer([](void* self, SoSensor*) { static_cast<SoVRMLMovieTexture*>(self)->tick(); }, this)
{
    SO_NODE_CONSTRUCTOR(SoVRMLTexture);
    m_timer.setPartOfGraph();
    m_timer.setInterval(SbTime(kTickInterval));
    SO_VRML_EXPOSED(loop, (false));
    SO_VRML_EXPOSED(speed, (1.0f));
    SO_VRML_EXPOSED_EMPTY(startTime);
    SO_VRML_EXPOSED_EMPTY(stopTime);
    SO_VRML_EXPOSED_EMPTY(url);
    SO_VRML_EVENT_OUT(duration_changed);
    SO_VRML_EVENT_OUT(isActive);
}

SoVRMLMovieTexture::~SoVRMLMovieTexture()
{
    m_timer.unschedule();
}

void SoVRMLMovieTexture::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLMovieTexture, SoVRMLTexture, "VRMLMovieTexture");
}

void SoVRMLMovieTexture::setDirectory(const SbString& directory)
{
    m_directory = directory;
    m_film.reset();
}

void SoVRMLMovieTexture::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    SoVRMLTexture::copyContents(from, copier);
    setDirectory(static_cast<const SoVRMLMovieTexture*>(from)->m_directory);
    isActive = false; // it begins by itself
    isActive.setDefault(true);
}

/// False after the first failure with these urls.
bool SoVRMLMovieTexture::load(SbString& reason)
{
    const kalmyr::detail::CacheLock lock;
    const auto urls = url.values();
    if (m_film && std::equal(urls.begin(), urls.end(), m_film->urls.begin(), m_film->urls.end()))
        return true;
    m_film = std::make_unique<Film>();
    m_film->urls.assign(urls.begin(), urls.end());
    m_isDurationTold = false;
    for (const SbString& one : urls) {
        const SbString name = kalmyr::detail::localFileName(one);
        SbString error;
        if (name.isEmpty())
            continue;
        if (kalmyr::detail::readMovie(SoImageFile::findFile(name, m_directory), m_film->frames,
                                      error)) {
            m_film->seconds = 0;
            for (const auto& frame : m_film->frames)
                m_film->seconds += frame.seconds;
            return true;
        }
        if (reason.isEmpty())
            reason = error;
    }
    if (urls.empty())
        return true;
    if (reason.isEmpty())
        reason = "none of its urls is a local file";
    static const SbImage sign = makeSign();
    m_film->frames.push_back({sign, 0});
    return false;
}

const SoVRMLMovieTexture::Film& SoVRMLMovieTexture::film()
{
    SbString reason;
    if (!load(reason))
        SoDebugError::postWarning("VRMLMovieTexture", "\"%s\": %s: %s; a sign is shown",
                                  getName().getString(), url[0].getString(), reason.getString());
    return *m_film;
}

bool SoVRMLMovieTexture::isTime(double now) const
{
    const double start = startTime.getValue().getValue();
    const double end = stopTime.getValue().getValue();
    const double cycle = m_film->seconds / std::abs(static_cast<double>(speed.getValue()));
    return m_film->seconds > 0 && now >= start && (end <= start || now < end)
           && (loop.getValue() || now - start < cycle);
}

std::size_t SoVRMLMovieTexture::frameAt(double now)
{
    const Film& shown = film();
    const double start = startTime.getValue().getValue();
    const double end = stopTime.getValue().getValue();
    const double rate = speed.getValue();
    const std::size_t last = shown.frames.empty() ? 0 : shown.frames.size() - 1;
    // A film that has no start but the epoch is not begun, unless it never ends.
    const bool isBegun = now >= start && (start > 0 || loop.getValue());
    if (rate == 0 || last == 0 || shown.seconds <= 0)
        return 0;
    if (!isBegun)
        return rate < 0 ? last : 0;
    if (end > start)
        now = std::min(now, end);
    double passed = (now - start) * std::abs(rate);
    if (!loop.getValue() && passed >= shown.seconds)
        return rate < 0 ? 0 : last;
    passed = std::fmod(passed, shown.seconds);
    if (rate < 0)
        passed = shown.seconds - passed;
    std::size_t frame = 0;
    for (; frame < last && passed >= shown.frames[frame].seconds; ++frame)
        passed -= shown.frames[frame].seconds;
    return frame;
}

const SbImage& SoVRMLMovieTexture::getPicture()
{
    static const SbImage none;
    const std::size_t frame = frameAt(SbTime::getTimeOfDay().getValue());
    if (m_film->frames.empty())
        return none;
    m_shown = frame;
    m_isDrawn = true;
    // The clock runs while somebody looks; drawing comes again after each change.
    if (m_film->seconds > 0 && SoSensorManager::isApplicationThread() && !m_timer.isScheduled())
        m_timer.schedule();
    return m_film->frames[frame].image;
}

void SoVRMLMovieTexture::tick()
{
    const kalmyr::detail::SharedEdit edit(SoSensorManager::isApplicationThread());
    if (!edit)
        return; // somebody reads; the next tick comes soon
    const SoRef<SoVRMLMovieTexture> self(getRefCount() > 0 ? this : nullptr);
    const double now = SbTime::getTimeOfDay().getValue();
    const std::size_t frame = frameAt(now);
    const bool active = isTime(now);
    if (!m_isDurationTold) {
        m_isDurationTold = true;
        duration_changed = SbTime(m_film->seconds);
    }
    if (isActive.getValue() != active)
        isActive = active;
    if (frame != m_shown && m_isDrawn) {
        m_isDrawn = false; // one redraw at a time
        m_ticksUnseen = 0;
        touch();
    } else if (frame != m_shown) {
        ++m_ticksUnseen;
    }
    // Whatever has it drawn again starts the clock again.
    const bool isOver = !active && now >= startTime.getValue().getValue();
    if (isOver || m_ticksUnseen > kMaxTicksUnseen)
        m_timer.unschedule();
}
