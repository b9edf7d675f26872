#include "Lighting.h"

#include <algorithm>
#include <cmath>

namespace kalmyr::detail {

namespace {

SbColor mix(const SbColor& a, const SbColor& b, float t)
{
    SbColor out;
    for (int c = 0; c < 3; ++c)
        out[c] = a[c] + (b[c] - a[c]) * t;
    return out;
}

bool isPerspective(const SoView& view)
{
    return view.projection[2][3] != 0;
}

} // namespace

SurfacePoint SurfacePoint::between(const SurfacePoint& a, const SurfacePoint& b, float t)
{
    SurfacePoint out;
    out.eye = a.eye + (b.eye - a.eye) * t;
    out.normal = a.normal + (b.normal - a.normal) * t;
    for (std::size_t c = 0; c < 4; ++c)
        out.color[c] = a.color[c] + (b.color[c] - a.color[c]) * t;
    out.texCoord = a.texCoord + (b.texCoord - a.texCoord) * t;
    return out;
}

Lighting::Lighting(const SoSceneView& view, const SoSceneView::Item& item)
    : m_look(*item.appearance),
      m_lights(view.surroundings[item.surroundings].lights),
      m_fogValues(view.fog.type != SoEnvironmentValues::NONE
                      ? view.fog
                      : SoFogValues::from(item.appearance->environment))
{
    const SoGeometry& geometry = *item.geometry;
    const SoView& camera = view.cameras[item.camera].view;
    const SoEnvironmentValues& around = m_look.environment;
    m_lit = m_look.lit && geometry.normals.size() >= geometry.positions.size();
    m_fog = m_fogValues.type != SoEnvironmentValues::NONE;
    m_twoSided = geometry.twoSided && !geometry.solid;
    m_specular = m_look.specular != SbColor(0, 0, 0);
    m_perspective = isPerspective(camera);
    const float far = camera.volume.getNearDist() + camera.volume.getDepth();
    m_farDistance = m_fogValues.visibility > 0 ? m_fogValues.visibility : far;
    for (int c = 0; c < 3; ++c)
        m_glow[c] = m_look.emissive[c]
                    + around.ambientIntensity * around.ambientColor[c] * m_look.ambient[c];
    const bool isFar = std::all_of(m_lights.begin(), m_lights.end(), [](const SoEyeLight& light) {
        return light.kind == SoLightRecord::DIRECTIONAL;
    });
    m_spots = m_lit && std::any_of(m_lights.begin(), m_lights.end(), [](const SoEyeLight& light) {
                  return light.kind == SoLightRecord::SPOT
                         || (light.kind == SoLightRecord::POINT
                             && light.reach < SoLightRecord::kUnlimited);
              });
    m_even = !m_fog && (!m_lit || (isFar && (!m_specular || !m_perspective)));
}

void Lighting::shine(const SoEyeLight& light, const SurfacePoint& point, const SbVec3f& normal,
                     const SbVec3f& toViewer, LightShares& sum) const
{
    SbVec3f toLight = light.position;
    float strength = 1;
    if (light.kind != SoLightRecord::DIRECTIONAL) {
        toLight -= point.eye;
        const float distance = toLight.length();
        if (distance > light.reach)
            return;
        toLight /= std::max(distance, 1e-20f);
        const SbVec3f& f = light.falloff;
        strength = 1 / std::max(f[0] + distance * (f[1] + distance * f[2]), 1e-6f);
        if (light.kind == SoLightRecord::SPOT) {
            const float c = -toLight.dot(light.direction);
            if (c < light.cosCutOff)
                strength = 0;
            else if (light.spotExponent > 0)
                strength *= std::pow(std::max(c, 0.0f), light.spotExponent);
            else if (light.beamWidth >= 0) {
                const float cutOff = std::acos(light.cosCutOff);
                strength *= std::clamp((cutOff - std::acos(std::min(c, 1.0f)))
                                           / std::max(cutOff - light.beamWidth, 1e-6f),
                                       0.0f, 1.0f);
            }
        }
    }
    const float d = normal.dot(toLight);
    float gloss = 0;
    if (m_specular && d > 0) {
        const SbVec3f half = (toLight + toViewer).normalized();
        gloss = std::pow(std::max(normal.dot(half), 0.0f), std::max(m_look.shininess * 128, 0.0f));
    }
    for (int c = 0; c < 3; ++c) {
        const auto i = static_cast<std::size_t>(c);
        const float color = light.color[c] * strength;
        sum.diffuse[c] += color * point.color[i] * std::max(d, 0.0f);
        sum.other[c] += color * (m_look.ambient[c] * light.ambient + m_look.specular[c] * gloss);
    }
}

LightShares Lighting::split(const SurfacePoint& point, bool front) const
{
    if (!m_lit)
        return {SbColor(point.color[0], point.color[1], point.color[2]), SbColor(0, 0, 0)};
    SbVec3f normal = point.normal.normalized();
    if (m_twoSided && !front)
        normal = -normal;
    const SbVec3f toViewer =
        m_specular && m_perspective ? (-point.eye).normalized() : SbVec3f(0, 0, 1);
    LightShares sum{SbColor(0, 0, 0), m_glow};
    for (const SoEyeLight& light : m_lights)
        shine(light, point, normal, toViewer, sum);
    return sum;
}

SbColor Lighting::light(const SurfacePoint& point, bool front) const
{
    SbColor sum = split(point, front).sum();
    for (int c = 0; m_lit && c < 3; ++c)
        sum[c] = std::min(sum[c], 1.0f);
    return sum;
}

float Lighting::getClearness(const SbVec3f& eye) const
{
    const float d = eye.length() / std::max(m_farDistance, 1e-20f);
    float clear = 1 - d;
    if (!m_fog)
        clear = 1;
    else if (m_fogValues.type == SoEnvironmentValues::FOG)
        clear = std::exp(-5.545f * d);
    else if (m_fogValues.type == SoEnvironmentValues::SMOKE)
        clear = std::exp(-5.545f * d * d);
    else if (m_fogValues.type == SoEnvironmentValues::EXPONENTIAL)
        clear = d < 1 ? std::exp(-d / (1 - d)) : 0;
    return std::clamp(clear, 0.0f, 1.0f);
}

SbColor Lighting::fog(const SbColor& color, const SbVec3f& eye) const
{
    return mix(m_fogValues.color, color, getClearness(eye));
}

} // namespace kalmyr::detail
