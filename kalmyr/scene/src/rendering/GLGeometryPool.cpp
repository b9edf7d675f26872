#include "rendering/GLGeometryPool.h"

#include "rendering/GLPaint.h"

#include <algorithm>
#include <vector>

namespace kalmyr::detail {

namespace {

enum Attribute : unsigned { NORMALS = 1, TEX_COORDS = 2, COLORS = 4, PIXEL_OFFSETS = 8 };

struct Stream {
    GLuint location;
    GLint size;
    GLenum type;
    std::uint32_t bytes; ///< a vertex
    unsigned attribute;  ///< 0: always there
};
constexpr Stream kStreams[] = {
    {0, 3, GL_FLOAT, 12, 0},
    {1, 3, GL_FLOAT, 12, NORMALS},
    {2, 2, GL_FLOAT, 8, TEX_COORDS},
    {3, 4, GL_UNSIGNED_BYTE, 4, COLORS},
    {7, 2, GL_FLOAT, 8, PIXEL_OFFSETS},
};

/// Arrays that are too short for the vertices are not read at all.
unsigned formatOf(const SoGeometry& geometry)
{
    const std::size_t count = geometry.positions.size();
    return (geometry.normals.size() >= count ? NORMALS : 0u)
           | (geometry.texCoords.size() >= count ? TEX_COORDS : 0u)
           | (geometry.colors.size() >= count ? COLORS : 0u)
           | (geometry.pixelOffsets.size() >= count ? PIXEL_OFFSETS : 0u);
}

const void* dataOf(const SoGeometry& geometry, unsigned attribute)
{
    switch (attribute) {
    case NORMALS:
        return geometry.normals.data();
    case TEX_COORDS:
        return geometry.texCoords.data();
    case COLORS:
        return geometry.colors.data();
    case PIXEL_OFFSETS:
        return geometry.pixelOffsets.data();
    default:
        return geometry.positions.data();
    }
}

void write(GLenum target, std::size_t at, std::size_t bytes, const void* data)
{
    if (bytes > 0) {
        glBufferSubData(target, static_cast<GLintptr>(at), static_cast<GLsizeiptr>(bytes), data);
    }
}

} // namespace

/// One vertex array: the streams of all attributes stand one after another in one buffer.
class GLGeometryPage {
public:
    GLGeometryPage(unsigned format, std::uint32_t numVertices, std::uint32_t numIndices,
                   GLuint slotNumbers);

    void free() const
    {
        glDeleteVertexArrays(1, &m_vertexArray);
        glDeleteBuffers(1, &m_vertices);
        glDeleteBuffers(1, &m_indices);
    }
    unsigned getFormat() const { return m_format; }
    bool isEmpty() const { return m_numGeometries == 0; }
    /// Whether it is worth being filled again.
    bool hasRoom() const { return 2 * m_vertexRanges.getUsed() < m_vertexRanges.getCapacity(); }
    std::size_t getNumBytes() const { return m_bytes; }

    /// False when there is no room.
    bool add(const SoGeometry& geometry, GLGeometry& out);
    void remove(const GLGeometry& geometry)
    {
        m_vertexRanges.free(static_cast<std::uint32_t>(geometry.firstVertex),
                            static_cast<std::uint32_t>(geometry.numVertices));
        m_indexRanges.free(geometry.firstIndex, geometry.numIndices());
        --m_numGeometries;
    }

    std::list<std::unique_ptr<GLGeometryPage>>::iterator self; ///< in the pool's list

private:
    void upload(const SoGeometry& geometry, const GLGeometry& to) const;

    unsigned m_format;
    GLuint m_vertexArray = 0;
    GLuint m_vertices = 0;
    GLuint m_indices = 0;
    RangeAllocator m_vertexRanges;
    RangeAllocator m_indexRanges;
    std::size_t m_numGeometries = 0;
    std::size_t m_bytes = 0;
};

GLGeometryPage::GLGeometryPage(unsigned format, std::uint32_t numVertices, std::uint32_t numIndices,
                               GLuint slotNumbers)
    : m_format(format), m_vertexRanges(numVertices), m_indexRanges(numIndices)
{
    glGenVertexArrays(1, &m_vertexArray);
    glGenBuffers(1, &m_vertices);
    glGenBuffers(1, &m_indices);
    glBindVertexArray(m_vertexArray);
    glBindBuffer(GL_ARRAY_BUFFER, m_vertices);
    std::size_t size = 0;
    for (const Stream& stream : kStreams) {
        if ((stream.attribute & ~format) == 0) {
            glEnableVertexAttribArray(stream.location);
            glVertexAttribPointer(stream.location, stream.size, stream.type,
                                  stream.type == GL_UNSIGNED_BYTE, 0,
                                  reinterpret_cast<const void*>(size));
            size += std::size_t{stream.bytes} * numVertices;
        }
    }
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(size), nullptr, GL_STATIC_DRAW);
    glBindBuffer(GL_ARRAY_BUFFER, slotNumbers);
    glEnableVertexAttribArray(GLGeometryPool::kSlotAttribute);
    glVertexAttribIPointer(GLGeometryPool::kSlotAttribute, 1, GL_INT, 0, nullptr);
    glVertexAttribDivisor(GLGeometryPool::kSlotAttribute, 1);
    const std::size_t indexBytes = std::size_t{numIndices} * sizeof(std::uint32_t);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_indices);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(indexBytes), nullptr,
                 GL_STATIC_DRAW);
    m_bytes = size + indexBytes;
}

bool GLGeometryPage::add(const SoGeometry& geometry, GLGeometry& out)
{
    out.numVertices = static_cast<GLsizei>(geometry.positions.size());
    out.numTriangleIndices = static_cast<GLsizei>(geometry.triangles.size());
    out.numLineIndices = static_cast<GLsizei>(geometry.lines.size());
    out.numPointIndices = static_cast<GLsizei>(geometry.points.size());
    const auto vertex = m_vertexRanges.allocate(static_cast<std::uint32_t>(out.numVertices));
    if (!vertex) {
        return false;
    }
    const auto index = m_indexRanges.allocate(out.numIndices());
    if (!index) {
        m_vertexRanges.free(*vertex, static_cast<std::uint32_t>(out.numVertices));
        return false;
    }
    out.page = this;
    out.vertexArray = m_vertexArray;
    out.indices = m_indices;
    out.firstVertex = static_cast<GLint>(*vertex);
    out.firstIndex = *index;
    upload(geometry, out);
    ++m_numGeometries;
    return true;
}

void GLGeometryPage::upload(const SoGeometry& geometry, const GLGeometry& to) const
{
    const std::size_t first = static_cast<std::size_t>(to.firstVertex);
    const std::size_t count = geometry.positions.size();
    std::size_t start = 0;
    // The binding point belongs to no vertex array, so that none is changed.
    glBindBuffer(GL_COPY_WRITE_BUFFER, m_vertices);
    for (const Stream& stream : kStreams) {
        if ((stream.attribute & ~m_format) == 0) {
            write(GL_COPY_WRITE_BUFFER, start + first * stream.bytes, count * stream.bytes,
                  dataOf(geometry, stream.attribute));
            start += std::size_t{stream.bytes} * m_vertexRanges.getCapacity();
        }
    }
    glBindBuffer(GL_COPY_WRITE_BUFFER, m_indices);
    std::size_t at = to.firstIndex * sizeof(std::uint32_t);
    for (const auto* indices : {&geometry.triangles, &geometry.lines, &geometry.points}) {
        const std::size_t bytes = indices->size() * sizeof(std::uint32_t);
        write(GL_COPY_WRITE_BUFFER, at, bytes, indices->data());
        at += bytes;
    }
    glBindBuffer(GL_COPY_WRITE_BUFFER, 0);
}

GLGeometryPool::GLGeometryPool(GLuint slotNumbers) : m_slotNumbers(slotNumbers) {}

GLGeometryPool::~GLGeometryPool()
{
    if (!m_abandoned) {
        for (const auto& page : m_pages) {
            page->free();
        }
    }
}

GLGeometry GLGeometryPool::add(const SoGeometry& geometry)
{
    const auto vertices = static_cast<std::uint32_t>(geometry.positions.size());
    const auto indices = static_cast<std::uint32_t>(
        geometry.triangles.size() + geometry.lines.size() + geometry.points.size());
    const unsigned format = formatOf(geometry);
    GLGeometry out;
    if (geometry.extras && vertices > 0) {
        addPage(format, vertices, indices)->add(geometry, out);
        glBindVertexArray(out.vertexArray); // new with the page
        out.more = uploadExtras(*geometry.extras, vertices);
        return out;
    }
    if (!m_open[format] || !m_open[format]->add(geometry, out)) {
        pageFor(format, vertices, indices)->add(geometry, out);
    }
    return out;
}

/// A page with room: one of its own for what is large, else a new one twice as large as the last.
GLGeometryPage* GLGeometryPool::pageFor(unsigned format, std::uint32_t vertices,
                                        std::uint32_t indices)
{
    constexpr std::uint32_t kLarge = kLargestPage / kLargeShare;
    if (vertices > kLarge || indices > kLarge * kIndicesPerVertex) {
        return addPage(format, vertices, indices);
    }
    std::uint32_t& size = m_nextSize[format];
    size = size ? std::min(2 * size, kLargestPage) : kFirstPage;
    while (size < vertices || size * kIndicesPerVertex < indices) {
        size *= 2;
    }
    return m_open[format] = addPage(format, size, size * kIndicesPerVertex);
}

GLGeometryPage* GLGeometryPool::addPage(unsigned format, std::uint32_t vertices,
                                        std::uint32_t indices)
{
    m_pages.push_back(std::make_unique<GLGeometryPage>(format, vertices, indices, m_slotNumbers));
    m_pages.back()->self = std::prev(m_pages.end());
    return m_pages.back().get();
}

void GLGeometryPool::remove(const GLGeometry& geometry)
{
    for (const GLuint buffer : {geometry.edges, geometry.outline}) {
        glDeleteBuffers(1, &buffer);
    }
    glDeleteBuffers(static_cast<GLsizei>(geometry.more.size()), geometry.more.data());
    GLGeometryPage* const page = geometry.page;
    page->remove(geometry);
    GLGeometryPage*& open = m_open[page->getFormat()];
    if (!page->isEmpty()) {
        open = page->hasRoom() ? page : open;
        return;
    }
    if (open == page) {
        open = nullptr;
        m_nextSize[page->getFormat()] = 0;
    }
    page->free();
    m_pages.erase(page->self);
}

std::size_t GLGeometryPool::getNumBytes() const
{
    std::size_t bytes = 0;
    for (const auto& page : m_pages) {
        bytes += page->getNumBytes();
    }
    return bytes;
}

} // namespace kalmyr::detail
