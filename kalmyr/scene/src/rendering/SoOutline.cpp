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

void SoOutline::setPath(const SoPath* path, int from)
{
    std::vector<kalmyr::detail::OutlinedObject> objects;
    if (path && from >= 0 && from < path->getLength())
        objects.emplace_back(path, from);
    m_outliner->setObjects(std::move(objects));
}

const SoPath* SoOutline::getPath() const
{
    const auto& objects = m_outliner->getObjects();
    return objects.empty() ? nullptr : objects.front().path.get();
}

SoNode* SoOutline::getHead() const
{
    const auto& objects = m_outliner->getObjects();
    return objects.empty() ? nullptr : objects.front().getHead();
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
