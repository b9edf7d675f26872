#pragma once

#include "GeoSystem.h"

#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>

#include <string>

namespace kalmyr::detail {

/// Where places are drawn: their system, and the origin that they are measured from.
struct GeoFrame {
    GeoSystem system;
    SbVec3d origin; ///< from the earth's centre
    SbMatrix turn;  ///< from the axes of the earth to those that things are drawn along
    std::string fault;

    /// False when there is no such place; `fault` tells.
    bool toLocal(const SbVec3d& given, SbVec3d& local);
    bool toLocal(const SbString& text, SbVec3d& local);
    SbVec3d fromLocal(const SbVec3d& local) const;
};

/// The frame that the fields `geoSystem` and `geoOrigin` of a node describe.
GeoFrame frameOf(const SoMFString& words, const SoSFNode& originField);

void warnOfGeo(const SoNode* node, const std::string& fault);

} // namespace kalmyr::detail
