#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbImage.h>
#include <kalmyr/base/SbViewportRegion.h>

#include <cstddef>
#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

class SoGLRenderAction;
class SoNode;
class SoPath;

/// Draws scenes into memory. Needs no window and no current context, and leaves the one that is
/// current as it was.
///
/// A picture that is larger than OpenGL's buffers, or than a bound of memory, is drawn in tiles
/// that fit together without seams. Each tile is one application of the action, with a window part
/// set.
class KALMYR_API SoOffscreenRenderer {
public:
    enum Components { RGB = 3, RGB_TRANSPARENCY = 4 };
    enum class Format { PNG, JPEG, BMP, TIFF, SGI_RGB, POSTSCRIPT };

    explicit SoOffscreenRenderer(const SbViewportRegion& region);
    /// Draws with somebody else's action, which must outlive the renderer. The action's viewport
    /// region is set for the time of a render() and put back after it.
    explicit SoOffscreenRenderer(SoGLRenderAction* action);
    ~SoOffscreenRenderer();
    SoOffscreenRenderer(const SoOffscreenRenderer&) = delete;
    SoOffscreenRenderer& operator=(const SoOffscreenRenderer&) = delete;

    /// The picture's size is that of the region's window. At most getMaximumResolution(), to which
    /// tiles do not count.
    void setViewportRegion(const SbViewportRegion& region);
    const SbViewportRegion& getViewportRegion() const { return m_region; }
    /// Largest width and height in pixels, 0 0 without OpenGL.
    static SbVec2s getMaximumResolution();

    /// At first RGB.
    void setComponents(Components components) { m_components = components; }
    Components getComponents() const { return m_components; }

    /// At first black.
    void setBackgroundColor(const SbColor& color) { m_backgroundColor = color; }
    const SbColor& getBackgroundColor() const { return m_backgroundColor; }

    /// Samples per pixel for smooth edges: 1 (at first) to 8; fewer when OpenGL has fewer.
    void setNumSamples(int samples) { m_samples = samples; }
    int getNumSamples() const { return m_samples; }

    /// Pictures that are wider or higher are drawn in tiles of at most that many pixels, rounded
    /// down to a multiple of 64, at least 64. 0, as at first: as large as OpenGL's buffers and the
    /// bound of memory allow.
    void setTileSize(int pixels) { m_tileSize = pixels; }
    int getTileSize() const { return m_tileSize; }

    /// A scene without a camera of its own is shown whole by a camera of the renderer's, with a
    /// light from the eye. Off at first: such a scene then shows what lies in the cube from -1
    /// to 1.
    void setDefaultCamera(bool on) { m_defaultCamera = on; }
    bool hasDefaultCamera() const { return m_defaultCamera; }

    /// The action that draws. Null returns to the renderer's own.
    void setGLRenderAction(SoGLRenderAction* action);
    SoGLRenderAction* getGLRenderAction() const;

    /// Draws into the buffer. False, with an error posted, when OpenGL is not to be had or the
    /// size is too large; the buffer is then empty.
    bool render(SoNode* root);
    bool render(SoPath* path);

    /// Draws and writes the picture. Of a picture that is drawn in tiles no more than one row of
    /// tiles is in memory; the buffer is empty afterwards. `quality`, from 0 to 1, is that of JPEG;
    /// TIFF is packed. False, with an error posted, for a null file, or when drawing or writing
    /// fails; the file, which stays open, may hold a part of the picture then.
    bool renderToFile(SoNode* root, std::FILE* file, Format format, float quality = 0.75f);
    /// The same, into a file that takes this name when it is complete.
    bool renderToFile(SoNode* root, const char* fileName, Format format, float quality = 0.75f);

    /// Rows from bottom to top without padding, 3 or 4 bytes a pixel; null before a render(). With
    /// transparency the colours are as they lie over the background: black behind makes them
    /// premultiplied ones.
    const unsigned char* getBuffer() const { return m_buffer.empty() ? nullptr : m_buffer.data(); }
    /// A copy of the buffer as an image.
    SbImage getImage() const;

    /// Write the picture in one of the formats, those with transparency with straight colours (not
    /// multiplied by it); false, with an error posted, when there is no
    /// picture or writing fails. The file stays open and the caller's; the name variants open,
    /// write and close.
    bool writeToPNG(std::FILE* file) const;
    bool writeToPNG(const char* fileName) const;
    /// `quality` from 0 to 1.
    bool writeToJPEG(std::FILE* file, float quality = 0.75f) const;
    bool writeToBMP(std::FILE* file) const;
    /// `compressed` packs the rows.
    bool writeToTIFF(std::FILE* file, bool compressed = true) const;
    bool writeToRGB(std::FILE* file) const;
    /// One page, the picture fitted into 8.5 by 11 inches.
    bool writeToPostScript(std::FILE* file) const;

private:
    struct Target;
    struct Drawing;
    bool renderScene(const std::function<void()>& apply);
    void straighten(unsigned char* pixels, std::size_t count) const;
    SbImage getStraightImage() const;

    SbViewportRegion m_region;
    SbColor m_backgroundColor;
    Components m_components = RGB;
    int m_samples = 1;
    int m_tileSize = 0;
    bool m_defaultCamera = false;
    std::unique_ptr<SoGLRenderAction> m_ownAction;
    SoGLRenderAction* m_action; // Not owned; the own one or somebody else's.
    std::unique_ptr<Target> m_target;
    std::vector<unsigned char> m_buffer;
    SbVec2s m_drawnSize{0, 0}; ///< of the picture in the buffer
};
