#pragma once

#include <kalmyr/io/SoSceneConversionAction.h>

/// Makes a VRML 1.0 scene out of any graph.
///
/// A graph of VRML 1.0 nodes only is taken over as it is. Otherwise cubes, spheres, cones and
/// cylinders stay what they are, and all other shapes become face, line and point sets of their
/// triangles, segments and points, each in a separator with its material and texture.
class KALMYR_API SoToVRMLAction : public SoSceneConversionAction {
    SO_ACTION_HEADER(SoToVRMLAction)

public:
    SoToVRMLAction();
    ~SoToVRMLAction() override;

    void apply(SoNode* root) override;
    void apply(SoPath* path) override;

    /// The converted scene; null before apply(). The action holds it until the next one.
    SoNode* getVRMLSceneGraph() const;

    /// Whether VRML 1.0 has nodes of that type.
    static bool isVrml1Type(SoType type);

protected:
    SoGroup* makeRoot() override;
    SoGroup* makeGroup(const SoNode* source) override;
    SoGroup* makeTransform(const SbMatrix& matrix) override;
    SoGroup* makeSwitch(int chosen) override;
    SoGroup* makeLOD(const std::vector<float>& ranges, const SbVec3f& center) override;
    SoNode* makeShape(SoShape* shape, const SoGeometry& geometry) override;
    SoNode* makeCamera(const SoNode* camera) override;
    SoNode* makeLight(const SoNode* light) override;
    SoNode* makeInline(const SbString& url, const SbString& folder, SoNode* content) override;
    SoNode* makeOther(SoNode* node) override;

private:
    void addLook(SoGroup& group, const SoGeometry& geometry);
    void addGeometry(SoGroup& group, SoShape* shape, const SoGeometry& geometry);

    SoRef<SoNode> m_whole; ///< a graph that needed no conversion
};
