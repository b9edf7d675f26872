#pragma once

#include <kalmyr/base/SbImage.h>
#include <kalmyr/base/SbString.h>

#include <span>
#include <vector>

class SoNode;

namespace kalmyr::detail {

/// The first picture of a list of urls that can be read, kept until the list changes.
class UrlPicture {
public:
    /// A null image when there is none; the fault is posted once, with the node's type and name.
    const SbImage& get(std::span<const SbString> urls, const SbString& directory,
                       const SoNode& node);
    void forget() { m_tried = false; }

private:
    bool load(std::span<const SbString> urls, const SbString& directory, SbString& reason);

    std::vector<SbString> m_urls; ///< that m_image belongs to
    SbImage m_image;
    bool m_tried = false;
};

} // namespace kalmyr::detail
