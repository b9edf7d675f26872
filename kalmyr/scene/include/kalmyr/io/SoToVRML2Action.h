#pragma once

#include <kalmyr/io/SoSceneConversionAction.h>

class SoVRMLGroup;

/// Makes a VRML97 scene out of any graph.
///
/// Cubes, spheres, cones and cylinders stay what they are; all other shapes become face, line and
/// point sets of their triangles, segments and points. Cameras become viewpoints. VRML97 nodes are
/// taken over as they are.
class KALMYR_API SoToVRML2Action : public SoSceneConversionAction {
    SO_ACTION_HEADER(SoToVRML2Action)

public:
    SoToVRML2Action();
    ~SoToVRML2Action() override;

    /// The converted scene; null before apply(). The action holds it until the next one.
    SoVRMLGroup* getVRML2SceneGraph() const;

    /// Shapes that look the same share their appearance. Off at first.
    void reuseAppearanceNodes(bool on) { m_reuseAppearances = on; }
    bool doReuseAppearanceNodes() const { return m_reuseAppearances; }
    /// Appearances share their materials and textures. Off at first.
    void reusePropertyNodes(bool on) { m_reuseProperties = on; }
    bool doReusePropertyNodes() const { return m_reuseProperties; }
    /// Shapes of the same geometry share it. Off at first.
    void reuseGeometryNodes(bool on) { m_reuseGeometries = on; }
    bool doReuseGeometryNodes() const { return m_reuseGeometries; }

protected:
    void beginTraversal(SoNode* root) override;
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
    SoNode* takeOver(SoNode* node) override;

private:
    bool holdsOthers(const SoNode* node);
    SoNode* makeAppearance(bool isLit);
    SoNode* makeMaterial(bool isLit);
    SoNode* makeTexture();
    SoNode* makeGeometry(SoShape* shape, const SoGeometry& geometry);

    using Made = std::unordered_map<std::uint64_t, SoRef<SoNode>>;
    Made m_appearances, m_materials, m_textures, m_geometries;
    std::unordered_map<const SoNode*, bool> m_holdOthers;
    bool m_reuseAppearances = false;
    bool m_reuseProperties = false;
    bool m_reuseGeometries = false;
};
