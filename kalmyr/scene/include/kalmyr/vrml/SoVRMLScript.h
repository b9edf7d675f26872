#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoDeclaredFields.h>
#include <kalmyr/fields/SoValueFields.h>

/// A program of VRML97. Its text, its fields and its routes are kept; it is not run.
///
/// Every node has fields of its own besides those of the class.
class KALMYR_API SoVRMLScript : public SoNode {
public:
    SoVRMLScript();
    static void initClass();
    static SoType getClassTypeId();
    SoType getTypeId() const override { return getClassTypeId(); }
    const SoFieldData* getFieldData() const override { return m_declared.getData(); }

    SoMFString url; ///< addresses of the program, or the program itself
    SoSFBool directOutput;
    SoSFBool mustEvaluate;

    /// The events and fields that the file declares.
    SoDeclaredFields& getDeclared() { return m_declared; }
    const SoDeclaredFields& getDeclared() const { return m_declared; }

    bool affectsState() const override { return false; }
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    ~SoVRMLScript() override;

private:
    SoDeclaredFields m_declared;
};
