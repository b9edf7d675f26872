#include <kalmyr/shapes/SoShapesInit.h>

#include <kalmyr/shapes/SoAsciiText.h>
#include <kalmyr/shapes/SoCone.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoCylinder.h>
#include <kalmyr/shapes/SoFaceSet.h>
#include <kalmyr/shapes/SoImage.h>
#include <kalmyr/shapes/SoIndexedFaceSet.h>
#include <kalmyr/shapes/SoIndexedLineSet.h>
#include <kalmyr/shapes/SoIndexedMarkerSet.h>
#include <kalmyr/shapes/SoIndexedNurbsCurve.h>
#include <kalmyr/shapes/SoIndexedNurbsSurface.h>
#include <kalmyr/shapes/SoIndexedPointSet.h>
#include <kalmyr/shapes/SoIndexedQuadSet.h>
#include <kalmyr/shapes/SoIndexedShape.h>
#include <kalmyr/shapes/SoIndexedTriangleSet.h>
#include <kalmyr/shapes/SoIndexedTriangleStripSet.h>
#include <kalmyr/shapes/SoLineSet.h>
#include <kalmyr/shapes/SoMarkerSet.h>
#include <kalmyr/shapes/SoNonIndexedShape.h>
#include <kalmyr/shapes/SoNurbsCurve.h>
#include <kalmyr/shapes/SoNurbsSurface.h>
#include <kalmyr/shapes/SoNurbsSurfaceShape.h>
#include <kalmyr/shapes/SoPointSet.h>
#include <kalmyr/shapes/SoQuadMesh.h>
#include <kalmyr/shapes/SoQuadSet.h>
#include <kalmyr/shapes/SoShape.h>
#include <kalmyr/shapes/SoSphere.h>
#include <kalmyr/shapes/SoText2.h>
#include <kalmyr/shapes/SoText3.h>
#include <kalmyr/shapes/SoTextShape.h>
#include <kalmyr/shapes/SoTriangleSet.h>
#include <kalmyr/shapes/SoTriangleStripSet.h>
#include <kalmyr/shapes/SoVertexShape.h>

void kalmyr::initShapes()
{
    SoShape::initClass();
    SoCube::initClass();
    SoSphere::initClass();
    SoCone::initClass();
    SoCylinder::initClass();
    SoVertexShape::initClass();
    SoNonIndexedShape::initClass();
    SoIndexedShape::initClass();
    SoFaceSet::initClass();
    SoIndexedFaceSet::initClass();
    SoTriangleStripSet::initClass();
    SoIndexedTriangleStripSet::initClass();
    SoQuadMesh::initClass();
    SoTriangleSet::initClass();
    SoIndexedTriangleSet::initClass();
    SoQuadSet::initClass();
    SoIndexedQuadSet::initClass();
    SoLineSet::initClass();
    SoIndexedLineSet::initClass();
    SoPointSet::initClass();
    SoIndexedPointSet::initClass();
    SoMarkerSet::initClass();
    SoIndexedMarkerSet::initClass();
    SoImage::initClass();
    SoNurbsCurve::initClass();
    SoIndexedNurbsCurve::initClass();
    SoNurbsSurfaceShape::initClass();
    SoNurbsSurface::initClass();
    SoIndexedNurbsSurface::initClass();
    SoTextShape::initClass();
    SoAsciiText::initClass();
    SoText2::initClass();
    SoText3::initClass();
}
