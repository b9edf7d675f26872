#include <kalmyr/shapes/SoIndexedShape.h>

SO_NODE_SOURCE(SoIndexedShape)

SoIndexedShape::SoIndexedShape()
{
    SO_NODE_CONSTRUCTOR(SoVertexShape);
    SO_ADD_FIELD(coordIndex, (0));
    SO_ADD_FIELD(materialIndex, (-1));
    SO_ADD_FIELD(normalIndex, (-1));
    SO_ADD_FIELD(textureCoordIndex, (-1));
}

SoIndexedShape::~SoIndexedShape() = default;

void SoIndexedShape::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoIndexedShape, SoVertexShape, "IndexedShape");
}

SoVertexShape::Indices SoIndexedShape::getIndices() const
{
    Indices indices;
    indices.material = materialIndex.values();
    indices.normal = normalIndex.values();
    indices.texCoord = textureCoordIndex.values();
    indices.indexed = true;
    return indices;
}
