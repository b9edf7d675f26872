#pragma once

#include <kalmyr/plotrel/SoPDFVectorOutput.h>
#include <kalmyr/plotrel/SoVectorizeAction.h>

/// Draws a scene into a PDF file.
class PLOTREL_API SoToPDFAction final : public SoVectorizeAction {
    SO_DERIVED_ACTION_HEADER(SoToPDFAction)

public:
    SoToPDFAction();
    ~SoToPDFAction() override;

    /// Owned by the action.
    SoPDFVectorOutput* getPDFVectorOutput() const;

    /// The output's openFile().
    bool openFile(const char* fileName) { return getPDFVectorOutput()->openFile(fileName); }
    /// The output's closeFile().
    bool closeFile() { return getPDFVectorOutput()->closeFile(); }

    /// The scene is put into the document as a model as well, to be turned by the reader. Off at
    /// first.
    void setModelEmbedded(bool on) { m_modelEmbedded = on; }
    bool isModelEmbedded() const { return m_modelEmbedded; }

protected:
    void sceneViewed(SoNode* root, const SoSceneView& view) override;

private:
    bool m_modelEmbedded = false;
};
