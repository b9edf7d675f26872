#pragma once

#include <kalmyr/base/SbString.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/elements/SoLookExtras.h>
#include <kalmyr/fields/SoMFUniformShaderParameter.h>
#include <kalmyr/fields/SoValueFields.h>

#include <cstdint>
#include <string>

/// Base of the stages of shader programs: a text in GLSL 3.30, from the file that `filename` names,
/// or `source` when that is empty. SoShaderProgram says what a text finds.
///
/// The file is read when the node is first traversed, and again when `filename` changes, when a
/// traversal finds it younger, and by reload(). A file that cannot be read is told once and counts
/// as no text.
class KALMYR_API SoShaderObject : public SoNode {
    SO_NODE_HEADER(SoShaderObject)

public:
    static void initClass();

    SoSFBool isActive; ///< false: the standard stage
    SoSFString source;
    SoSFString filename;
    SoMFUniformShaderParameter parameter; ///< values for all stages of the program

    virtual SoProgramValues::Stage getStage() const = 0;
    /// The text; empty for the standard stage.
    std::string getText();
    /// Type and name of the node and its file, for messages.
    std::string getLabel() const;
    /// Reads the file again when the scene is drawn next.
    void reload();
    /// The folder in which relative file names are looked for; set by readers of scene files.
    void setDirectory(const SbString& directory);
    const SbString& getDirectory() const { return m_directory; }
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    SoShaderObject();
    ~SoShaderObject() override;

private:
    SbString m_directory;
    SbString m_loadedName; ///< file name that m_text belongs to
    std::string m_text;
    std::int64_t m_time = 0; ///< of the file when it was read
};
