#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbFileReplacement.h>
#include <kalmyr/base/SbString.h>
#include <kalmyr/base/SbVec.h>

#include <string>

namespace kalmyr::detail {
class ByteWriter;
struct VectorDrawing;
} // namespace kalmyr::detail

/// A file of vector graphics, and the page that a drawing is put on.
///
/// A vectorising action owns its output: open the file, apply the action, close the file. The file
/// takes its name when it is closed, and only when all went well; until then, and after a failure,
/// what stood under that name stays as it was.
///
/// Lengths are in millimetres. The drawing stands in the middle of the page.
class PLOTREL_API SoVectorOutput {
public:
    enum Orientation { PORTRAIT, LANDSCAPE };
    enum ColorMode {
        COLOR,
        GREY,           ///< by luminance
        BLACK_AND_WHITE ///< what is darker than half becomes black, the rest white
    };

    virtual ~SoVectorOutput();
    SoVectorOutput(const SoVectorOutput&) = delete;
    SoVectorOutput& operator=(const SoVectorOutput&) = delete;

    /// Begins a file; discards one that is open. False, with an error that begins "Can not open
    /// file " posted, when it cannot be written.
    bool openFile(const char* fileName);
    bool isOpen() const { return m_file.isOpen(); }
    /// Gives the file its name. False when none is open, when nothing was drawn into it or drawing
    /// failed, or, with an error posted, when the bytes cannot be stored. The destructor closes an
    /// open file.
    bool closeFile();
    /// Ends without writing; an existing file stays as it was.
    void discardFile();

    /// Width and height of the page in portrait orientation, each from 1 to 10000; others are a
    /// broken contract and change nothing. At first A4, 210 by 297.
    void setPageSize(const SbVec2f& size);
    const SbVec2f& getPageSize() const { return m_pageSize; }
    /// LANDSCAPE (at first) turns the page so that its longer side is the width.
    void setOrientation(Orientation orientation) { m_orientation = orientation; }
    Orientation getOrientation() const { return m_orientation; }
    /// Width and height of the page as it lies.
    SbVec2f getOrientedPageSize() const;
    /// Free on all sides of the page; at first 10. At least 0 and less than half of the page.
    void setMargin(float margin);
    float getMargin() const { return m_margin; }

    /// Size of the drawing; 0 0 (at first): as large as fits between the margins, in the
    /// proportions of the action's viewport.
    void setDrawingSize(const SbVec2f& size);
    const SbVec2f& getDrawingSize() const { return m_drawingSize; }

    /// How many millimetres one pixel of a line's width or a point's size becomes; 0 (at first): as
    /// many as make the drawing look like the viewport on a screen.
    void setPixelSize(float millimetres);
    float getPixelSize() const { return m_pixelSize; }
    /// The finest line; at first 0.1.
    void setMinLineWidth(float millimetres);
    float getMinLineWidth() const { return m_minLineWidth; }

    void setColorMode(ColorMode mode) { m_colorMode = mode; }
    ColorMode getColorMode() const { return m_colorMode; }

    /// Of the document; empty at first.
    void setTitle(const SbString& title) { m_title = title; }
    const SbString& getTitle() const { return m_title; }

    /// Features of the format. Before write() the drawing is stripped of those that it lacks:
    /// shaded triangles become flat ones, transparency mixed colours, textures their average.
    struct Abilities {
        bool shading = false;      ///< triangles with a colour for each corner
        bool transparency = false; ///< opacity of a polygon, line or point
        bool images = false;       ///< textures
        bool overpainting = true;  ///< what is drawn later hides what was drawn before
    };
    virtual Abilities getAbilities() const = 0;

protected:
    SoVectorOutput();

private:
    friend class SoVectorizeAction;
    /// Writes a whole document with one page. Errors of the file are found by the caller.
    virtual void write(const kalmyr::detail::VectorDrawing& drawing,
                       kalmyr::detail::ByteWriter& bytes) = 0;
    /// Makes the drawing fit for the format, and writes it.
    bool writeDrawing(kalmyr::detail::VectorDrawing& drawing, float tolerance);

    SbFileReplacement m_file;
    std::string m_fileName;
    bool m_hasDrawing = false;
    SbVec2f m_pageSize{210, 297};
    Orientation m_orientation = LANDSCAPE;
    float m_margin = 10;
    SbVec2f m_drawingSize{0, 0};
    float m_pixelSize = 0;
    float m_minLineWidth = 0.1f;
    ColorMode m_colorMode = COLOR;
    SbString m_title;
};
