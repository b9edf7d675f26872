#include "RenderedScene.h"

#include "support/Clock.h"
#include "support/Program.h"

#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/vrml/SoVRMLMovieTexture.h>

#include <fstream>

namespace {

const SbColor kRed(1, 0, 0), kGreen(0, 1, 0), kBlue(0, 0, 1), kWhite(1, 1, 1);

/// A frame of one row: colours by number in the palette red, green, blue, white.
struct GifFrame {
    int left;
    std::vector<int> colors; ///< one or two
    int hundredths;
    int disposal; ///< 1: stays, 2: cleared, 3: what was there before comes back
};

std::string gif(const std::vector<GifFrame>& frames)
{
    const auto word = [](int v) {
        return std::string{static_cast<char>(v & 255), static_cast<char>(v >> 8)};
    };
    std::string out = "GIF89a" + word(2) + word(1) + std::string("\xa1\0\0", 3);
    out += std::string("\xff\0\0\0\xff\0\0\0\xff\xff\xff\xff", 12);
    for (const GifFrame& frame : frames) {
        out += std::string("\x21\xf9\x04", 3) + static_cast<char>(frame.disposal << 2)
               + word(frame.hundredths) + std::string("\0\0", 2);
        out += ',' + word(frame.left) + word(0) + word(static_cast<int>(frame.colors.size()))
               + word(1) + std::string("\0\x02", 2);
        // Codes of three bits: clear, the colours, end.
        unsigned bits = 4, shift = 3;
        for (const int color : frame.colors) {
            bits |= static_cast<unsigned>(color) << shift;
            shift += 3;
        }
        bits |= 5u << shift;
        out += '\x02' + word(static_cast<int>(bits)) + std::string("\0", 1);
    }
    return out + ';';
}

class Movies : public RenderedScene {
protected:
    std::string write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(m_folder.path(name), std::ios::binary) << bytes;
        return m_folder.path(name);
    }
    void drawFilm(const std::string& path, const std::string& fields)
    {
        draw97(
            "Shape { appearance Appearance { texture DEF Film MovieTexture { repeatS FALSE url \""
            + path + "\" " + fields
            + " } } geometry IndexedFaceSet { coord Coordinate { point [ -1 -1 0, 1 -1 0, 1 1 0, "
              "-1 1 0 ] } texCoord TextureCoordinate { point [ 0 0, 1 0, 1 1, 0 1 ] } coordIndex "
              "[ 0 1 2 3 ] } }");
        m_film = static_cast<SoVRMLMovieTexture*>(SoNode::getByName(SbName("Film")));
    }
    /// Seconds from here on, which may go back.
    void setTime(double seconds)
    {
        support::Clock::advance(seconds - m_now);
        m_now = seconds;
    }
    std::string at(double seconds) const { return std::to_string(m_start + seconds) + " "; }
    /// Serves the timers, then draws.
    void goTo(double seconds)
    {
        setTime(seconds);
        SoSensorManager::processTimerQueue();
        redraw();
    }
    void expectFrame(const SbColor& left, const SbColor& right, const std::string& what)
    {
        expectColor(-0.8f, 0, left, what, 4);
        expectColor(0.8f, 0, right, what, 4);
    }

    support::Clock m_clock;
    double m_start = SbTime::getTimeOfDay().getValue();
    double m_now = 0;
    support::TempFolder m_folder;
    SoVRMLMovieTexture* m_film = nullptr;
};

const std::vector<GifFrame> kFrames = {
    {0, {0, 1}, 100, 1}, {1, {2}, 200, 3}, {0, {3}, 50, 1}, {0, {2, 2}, 50, 2}};

TEST_F(Movies, FramesFollowTheClock)
{
    drawFilm(write("film.gif", gif(kFrames)), "startTime " + at(1));
    expectFrame(kRed, kGreen, "before its time");
    goTo(0.5);
    EXPECT_FALSE(m_film->isActive.getValue());
    EXPECT_DOUBLE_EQ(m_film->duration_changed.getValue().getValue(), 4);
    goTo(1.5);
    EXPECT_TRUE(m_film->isActive.getValue());
    expectFrame(kRed, kGreen, "first");
    goTo(2.5);
    expectFrame(kRed, kBlue, "second, over a part of the first");
    goTo(4.25);
    expectFrame(kWhite, kGreen, "third, over what was before the second");
    goTo(4.75);
    expectFrame(kBlue, kBlue, "last");
    goTo(5.5);
    EXPECT_FALSE(m_film->isActive.getValue());
    expectFrame(kBlue, kBlue, "over");
}

TEST_F(Movies, LoopSpeedAndStopAreHeeded)
{
    const std::string path = write("film.gif", gif(kFrames));
    drawFilm(path, "startTime " + at(1) + "loop TRUE stopTime " + at(10));
    goTo(5.5);
    expectFrame(kRed, kGreen, "again");
    goTo(6.5);
    expectFrame(kRed, kBlue, "again, second");
    goTo(20);
    expectFrame(kRed, kBlue, "stopped at the first second of the third turn");
    EXPECT_FALSE(m_film->isActive.getValue());
    setTime(0);
    drawFilm(path, "startTime " + at(1) + "speed 2");
    goTo(1.75);
    expectFrame(kRed, kBlue, "twice as fast");
    setTime(0);
    drawFilm(path, "startTime " + at(1) + "speed -1");
    expectFrame(kBlue, kBlue, "backwards, before its time");
    goTo(4.5);
    expectFrame(kRed, kGreen, "backwards");
}

TEST_F(Movies, OtherFormatsShowASign)
{
    const std::string path = write("film.mpg", "not a film");
    {
        const support::ErrorScope errors = support::expectErrors();
        drawFilm(path, "");
        EXPECT_EQ(errors.count(), 1u);
        EXPECT_TRUE(errors.contains("film.mpg"));
    }
    expectColor(0, 0, kWhite, "the sign");
    EXPECT_LT(pixelAt(-0.98f, 0)[0], 80) << "its frame";
    {
        const support::ErrorScope errors = support::expectErrors();
        drawFilm(write("cut.gif", gif(kFrames).substr(0, 60)), "");
        EXPECT_TRUE(errors.contains("cut.gif"));
    }
}

} // namespace
