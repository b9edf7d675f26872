#pragma once

#include <kalmyr/base/SbString.h>
#include <kalmyr/core/SoBase.h>
#include <kalmyr/io/SoInput.h>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace kalmyr::detail {

/// What a text format has words for, and which.
class WriteDialect {
public:
    /// Kalmyr text unless the header is one of VRML.
    explicit WriteDialect(const SbString& header) : m_format(SoInput::formatOfHeader(header.view()))
    {
    }

    bool isVrml97() const { return m_format == SoInput::VRML2; }
    bool isKalmyr() const { return !isVrml97() && !isVrml1(); }
    bool hasRoutes() const { return !isVrml1(); }
    bool hasUnusedPrototypes() const { return !isVrml1(); }
    /// Engines and global fields, which routes may start from.
    bool hasEngines() const { return isKalmyr(); }
    /// Whether a field can be marked as ignored.
    bool hasIgnoredFields() const { return isKalmyr(); }
    /// Pictures with a depth.
    bool hasVolumes() const { return isKalmyr(); }
    /// Whether fields are kept as quoted text; elsewhere the text stands there itself.
    bool quotesKeptFields() const { return isKalmyr(); }
    bool hasField(std::string_view name) const
    {
        return !isVrml1()
               || std::find(std::begin(kLater), std::end(kLater), name) == std::end(kLater);
    }

    std::string_view nameOfType(std::string_view registered) const
    {
        if (isVrml97() && registered.starts_with(kVrmlPrefix))
            registered.remove_prefix(kVrmlPrefix.size());
        return registered;
    }
    /// Prototypes are called "proto:Name" where they could be taken for classes.
    std::string_view protoPrefix() const { return isVrml97() ? "" : "proto:"; }
    /// Stands between a name and the number that tells it from others. Names of VRML have no plus.
    std::string_view instancePrefix() const
    {
        const SbString& prefix = SoBase::getInstancePrefix();
        return !isKalmyr() && prefix == "+" ? std::string_view("_")
                                            : std::string_view(prefix.getString());
    }

    /// Types of VRML97 begin with it.
    static constexpr std::string_view kVrmlPrefix = "VRML";

private:
    /// Fields that nodes of VRML 1.0 have in memory, but not there.
    static constexpr std::string_view kLater[] = {
        "aspectRatio",   "blendColor",     "boundingBoxCaching", "farDistance",
        "fastEditing",   "model",          "nearDistance",       "pickCulling",
        "renderCaching", "vertexProperty", "viewportMapping"};

    bool isVrml1() const { return m_format == SoInput::VRML1; }

    SoInput::Format m_format;
};

} // namespace kalmyr::detail
