#include "mirabo/extender/private/Frame.h"

#include <atomic>

namespace mirabo {

namespace {

struct Frames {
    int depth = 0;
    Frame::Kind outermost = Frame::Kind::Callback;
};

thread_local Frames s_frames;
std::atomic<Frame::LeftCallback> s_left{nullptr};
std::atomic<bool> s_ending{false};

} // namespace

Frame::Frame(Kind kind)
{
    if (s_frames.depth++ == 0)
        s_frames.outermost = kind;
}

Frame::~Frame()
{
    if (--s_frames.depth > 0)
        return;
    if (const LeftCallback left = s_left)
        left(s_frames.outermost);
}

bool Frame::isOpen()
{
    return s_frames.depth > 0;
}

void Frame::setLeftCallback(LeftCallback callback)
{
    s_left = callback;
}

bool Frame::isEnding()
{
    return s_ending;
}

void Frame::setEnding(bool on)
{
    s_ending = on;
}

} // namespace mirabo
