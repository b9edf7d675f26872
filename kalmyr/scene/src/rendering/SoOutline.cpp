#include <kalmyr/rendering/SoOutline.h>

#include "rendering/Outliner.h"

#include <kalmyr/actions/SoGLRenderAction.h>

#include <algorithm>

namespace {

constexpr float kMinWidth = 1;
constexpr float kMaxWidth = 16;

} // namespace

SoOutline::SoOutline() : m_outliner(std::make_unique<kalmyr::detail::Outliner>()) {}

SoOutline::~SoOutline()
{
    for (SoGLRenderAction* action : m_actions) {
        std::erase(action->m_outlines, this);
    }
}

void SoOutline::setPaths(const std::vector<const SoPath*>& paths)
{
    std::vector<kalmyr::detail::OutlinedObject> objects;
    for (const SoPath* path : paths) {
        if (path && !path->isEmpty()) {
            objects.emplace_back(path->copy());
        }
    }
    m_outliner->setObjects(std::move(objects));
}

void SoOutline::setPath(const SoPath* path)
{
    setPaths({path});
}

bool SoOutline::isEmpty() const
{
    return !m_outliner->hasObjects();
}

void SoOutline::setVisible(bool on)
{
    m_outliner->isVisible = on;
}

bool SoOutline::isVisible() const
{
    return m_outliner->isVisible;
}

void SoOutline::setColor(const SbColor& color)
{
    m_outliner->style.color = color;
}

const SbColor& SoOutline::getColor() const
{
    return m_outliner->style.color;
}

void SoOutline::setLineWidth(float width)
{
    m_outliner->style.width = std::clamp(width, kMinWidth, kMaxWidth);
}

float SoOutline::getLineWidth() const
{
    return m_outliner->style.width;
}

void SoOutline::setLinePattern(unsigned short pattern)
{
    m_outliner->style.pattern = pattern;
}

unsigned short SoOutline::getLinePattern() const
{
    return m_outliner->style.pattern;
}
