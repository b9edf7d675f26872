#include <kalmyr/nodes/SoNodesInit.h>

#include <kalmyr/nodes/SoAlphaTest.h>
#include <kalmyr/nodes/SoAnnotation.h>
#include <kalmyr/nodes/SoBackground.h>
#include <kalmyr/nodes/SoBaseColor.h>
#include <kalmyr/nodes/SoCallback.h>
#include <kalmyr/nodes/SoClipPlane.h>
#include <kalmyr/nodes/SoColorIndex.h>
#include <kalmyr/nodes/SoComplexity.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoCoordinate4.h>
#include <kalmyr/nodes/SoDepthBuffer.h>
#include <kalmyr/nodes/SoDrawStyle.h>
#include <kalmyr/nodes/SoEnvironment.h>
#include <kalmyr/nodes/SoEventCallback.h>
#include <kalmyr/nodes/SoFile.h>
#include <kalmyr/nodes/SoFont.h>
#include <kalmyr/nodes/SoFontStyle.h>
#include <kalmyr/nodes/SoFragmentShader.h>
#include <kalmyr/nodes/SoGeometryShader.h>
#include <kalmyr/nodes/SoGradientBackground.h>
#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/nodes/SoImageBackground.h>
#include <kalmyr/nodes/SoInfo.h>
#include <kalmyr/nodes/SoLabel.h>
#include <kalmyr/nodes/SoLevelOfDetail.h>
#include <kalmyr/nodes/SoLightModel.h>
#include <kalmyr/nodes/SoLinearProfile.h>
#include <kalmyr/nodes/SoLOD.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoMaterialBinding.h>
#include <kalmyr/nodes/SoMatrixTransform.h>
#include <kalmyr/nodes/SoNormal.h>
#include <kalmyr/nodes/SoNormalBinding.h>
#include <kalmyr/nodes/SoNurbsProfile.h>
#include <kalmyr/nodes/SoPackedColor.h>
#include <kalmyr/nodes/SoPickStyle.h>
#include <kalmyr/nodes/SoPixelScale.h>
#include <kalmyr/nodes/SoPolygonOffset.h>
#include <kalmyr/nodes/SoProfile.h>
#include <kalmyr/nodes/SoProfileCoordinate2.h>
#include <kalmyr/nodes/SoProfileCoordinate3.h>
#include <kalmyr/nodes/SoResetTransform.h>
#include <kalmyr/nodes/SoRotation.h>
#include <kalmyr/nodes/SoRotationXYZ.h>
#include <kalmyr/nodes/SoScale.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoShaderObject.h>
#include <kalmyr/nodes/SoShaderParameters.h>
#include <kalmyr/nodes/SoShaderProgram.h>
#include <kalmyr/nodes/SoShapeHints.h>
#include <kalmyr/nodes/SoStackTexture.h>
#include <kalmyr/nodes/SoSwitch.h>
#include <kalmyr/nodes/SoTexture2.h>
#include <kalmyr/nodes/SoTexture2Transform.h>
#include <kalmyr/nodes/SoTexture3.h>
#include <kalmyr/nodes/SoTexture3Transform.h>
#include <kalmyr/nodes/SoTextureCoordinate2.h>
#include <kalmyr/nodes/SoTextureCoordinate3.h>
#include <kalmyr/nodes/SoTextureCoordinateBinding.h>
#include <kalmyr/nodes/SoTextureCoordinateCube.h>
#include <kalmyr/nodes/SoTextureCoordinateDefault.h>
#include <kalmyr/nodes/SoTextureCoordinateEnvironment.h>
#include <kalmyr/nodes/SoTextureCoordinateFunction.h>
#include <kalmyr/nodes/SoTextureCoordinatePlane.h>
#include <kalmyr/nodes/SoTextureCubeMap.h>
#include <kalmyr/nodes/SoTextureUnit.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/nodes/SoTransformation.h>
#include <kalmyr/nodes/SoTransformSeparator.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/nodes/SoVertexAttribute.h>
#include <kalmyr/nodes/SoVertexBuffer.h>
#include <kalmyr/nodes/SoVertexShader.h>
#include <kalmyr/nodes/SoWWWAnchor.h>
#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/shapes/SoVertexProperty.h>

void kalmyr::initNodes()
{
    SoGroup::initClass();
    SoSeparator::initClass();
    SoAnnotation::initClass();
    SoSelection::initClass();
    SoSwitch::initClass();
    SoLOD::initClass();
    SoLevelOfDetail::initClass();
    SoTransformSeparator::initClass();
    SoTransformation::initClass();
    SoTransform::initClass();
    SoTranslation::initClass();
    SoRotation::initClass();
    SoRotationXYZ::initClass();
    SoScale::initClass();
    SoPixelScale::initClass();
    SoMatrixTransform::initClass();
    SoResetTransform::initClass();
    SoMaterial::initClass();
    SoBaseColor::initClass();
    SoPackedColor::initClass();
    SoMaterialBinding::initClass();
    SoDrawStyle::initClass();
    SoShapeHints::initClass();
    SoComplexity::initClass();
    SoLightModel::initClass();
    SoPickStyle::initClass();
    SoEnvironment::initClass();
    SoCoordinate3::initClass();
    SoCoordinate4::initClass();
    SoNormal::initClass();
    SoNormalBinding::initClass();
    SoTextureCoordinate2::initClass();
    SoTextureCoordinateBinding::initClass();
    SoVertexProperty::initClass();
    SoProfileCoordinate2::initClass();
    SoProfileCoordinate3::initClass();
    SoProfile::initClass();
    SoLinearProfile::initClass();
    SoNurbsProfile::initClass();
    SoTexture2::initClass();
    SoTexture2Transform::initClass();
    SoTextureCoordinate3::initClass();
    SoTextureCoordinateFunction::initClass();
    SoTextureCoordinateDefault::initClass();
    SoTextureCoordinatePlane::initClass();
    SoTextureCoordinateEnvironment::initClass();
    SoTextureCoordinateCube::initClass();
    SoTextureUnit::initClass();
    SoStackTexture::initClass();
    SoTexture3::initClass();
    SoTextureCubeMap::initClass();
    SoTexture3Transform::initClass();
    SoColorIndex::initClass();
    SoPolygonOffset::initClass();
    SoDepthBuffer::initClass();
    SoAlphaTest::initClass();
    SoUniformShaderParameter::initClass();
    SoShaderParameterFloat::initClass();
    SoShaderParameterVec2f::initClass();
    SoShaderParameterVec3f::initClass();
    SoShaderParameterVec4f::initClass();
    SoShaderParameterColor::initClass();
    SoShaderParameterInt32::initClass();
    SoShaderParameterVec2i32::initClass();
    SoShaderParameterVec3i32::initClass();
    SoShaderParameterVec4i32::initClass();
    SoShaderParameterMatrix::initClass();
    SoShaderParameterTexture::initClass();
    SoShaderObject::initClass();
    SoVertexShader::initClass();
    SoGeometryShader::initClass();
    SoFragmentShader::initClass();
    SoShaderProgram::initClass();
    SoVertexAttribute::initClass();
    SoVertexBuffer::initClass();
    SoBackground::initClass();
    SoGradientBackground::initClass();
    SoImageBackground::initClass();
    SoCallback::initClass();
    SoEventCallback::initClass();
    SoInfo::initClass();
    SoLabel::initClass();
    SoFont::initClass();
    SoFontStyle::initClass();
    SoFile::initClass();
    SoWWWInline::initClass();
    SoWWWAnchor::initClass();
    SoClipPlane::initClass();
}
