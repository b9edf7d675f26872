#pragma once

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbString.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/nodes/SoGroup.h>

#include <unordered_map>
#include <unordered_set>
#include <vector>

class SoGeometry;
class SoShape;

/// Base of the actions that make a scene of other nodes out of a graph.
///
/// Groups become groups; what stands in another space than its group goes below a transformation;
/// shapes take their material, texture and light model from the state. A separator or VRML97 group
/// that occurs several times under the same state is converted once. Node kits and prototypes are
/// flattened; sensors, engines and what else shows nothing is left out, with one warning a type.
class KALMYR_API SoSceneConversionAction : public SoAction {
public:
    ~SoSceneConversionAction() override;

    /// For the methods of node types.
    void convertNode(SoNode* node);
    void convertGroup(SoNode* node);
    void convertSwitch(SoNode* node, int chosen);
    void convertLevels(SoNode* node, SoGroup* made);
    void convertShape(SoShape* shape);
    void convertCamera(SoNode* node);
    void convertLight(SoNode* node);
    void convertInline(SoNode* node);
    void convertLOD(SoNode* node);

protected:
    SoSceneConversionAction();

    /// For initMethods() of the concrete actions.
    using AddMethod = void (*)(SoType type, SoActionMethod method);
    static void addMethods(AddMethod add);

    void beginTraversal(SoNode* root) override;
    /// Adds a finished node below the present group, in the present space.
    void emit(SoNode* node);
    SoGroup* getResult() const { return m_result.get(); }

    virtual SoGroup* makeRoot() = 0;
    /// `source` may be a group with a meaning of its own, such as an anchor.
    virtual SoGroup* makeGroup(const SoNode* source) = 0;
    /// A group whose children are transformed by `matrix`.
    virtual SoGroup* makeTransform(const SbMatrix& matrix) = 0;
    virtual SoGroup* makeSwitch(int chosen) = 0;
    virtual SoGroup* makeLOD(const std::vector<float>& ranges, const SbVec3f& center) = 0;
    /// Null for nothing.
    virtual SoNode* makeShape(SoShape* shape, const SoGeometry& geometry) = 0;
    virtual SoNode* makeCamera(const SoNode* camera) = 0;
    /// A light that shines on the whole scene becomes, where the format lacks such, one of the
    /// space of the root; it comes before everything else.
    virtual SoNode* makeLight(const SoNode* light) = 0;
    /// `folder`: that a relative url starts from.
    virtual SoNode* makeInline(const SbString& url, const SbString& folder, SoNode* content) = 0;
    /// Returns the node that stands for one that is none of these; null for nothing.
    virtual SoNode* makeOther(SoNode*) { return nullptr; }
    /// A node that the format has as it is; null for others.
    virtual SoNode* takeOver(SoNode*) { return nullptr; }

    struct Level {
        SoRef<SoGroup> group;
        SbMatrix matrix;      ///< model matrix of the group's space
        SoRef<SoGroup> moved; ///< the transformation made last in the group
        SbMatrix movedMatrix; ///< model matrix below it
    };
    const Level& getLevel() const { return m_levels.back(); }

private:
    bool take(SoNode* node);
    void open(SoGroup* group);
    SoRef<SoGroup> close();
    SoGroup* place();
    /// Everything that follows in the present group goes into one in the present space.
    void beginGroupForRest();
    void noteLoss(const SoNode* node);
    std::uint64_t stateId() const;

    std::vector<Level> m_levels;
    SoRef<SoGroup> m_result;
    std::unordered_map<std::uint64_t, std::pair<const SoNode*, SoRef<SoNode>>> m_converted;
    int m_numMade = 0;
    int m_numSceneLights = 0;
    std::unordered_set<int> m_lost; ///< indices of types that were left out
};
