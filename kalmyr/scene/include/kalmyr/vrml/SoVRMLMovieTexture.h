#pragma once

#include <kalmyr/sensors/SoTimerSensor.h>
#include <kalmyr/vrml/SoVRMLTexture.h>

#include <memory>

/// A film on shapes: an animated GIF. Of other formats a sign is shown in its place, and one
/// warning says so; sound is not played.
///
/// The clock is that of SbTime::getTimeOfDay(). The picture changes, and the events are sent, while
/// the node is drawn. Before its time the first frame is shown (the last one for a negative speed),
/// after it the frame at which it ended.
class KALMYR_API SoVRMLMovieTexture : public SoVRMLTexture {
    SO_NODE_HEADER(SoVRMLMovieTexture)

public:
    SoVRMLMovieTexture();
    static void initClass();

    SoSFBool loop;
    SoSFFloat speed;
    SoSFTime startTime;
    SoSFTime stopTime;
    SoMFString url;
    SoSFTime duration_changed; ///< event out: seconds at the speed of 1, -1 without a film
    SoSFBool isActive;         ///< event out

    const SbImage& getPicture() override;

    /// The folder in which relative file names are looked for; set by readers of scene files.
    void setDirectory(const SbString& directory);
    const SbString& getDirectory() const { return m_directory; }
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    ~SoVRMLMovieTexture() override;

private:
    struct Film;

    const Film& film();
    bool load(SbString& reason);
    bool isTime(double now) const;
    std::size_t frameAt(double now);
    void tick();

    SbString m_directory;
    std::unique_ptr<Film> m_film; ///< null: not read yet
    SoTimerSensor m_timer;
    std::size_t m_shown = 0; ///< frame that was handed out last
    int m_ticksUnseen = 0;   ///< with a frame to show that nobody drew
    bool m_isDrawn = false;  ///< since it last asked for it
    bool m_isDurationTold = false;
};
