#include <kalmyr/fields/SoSFPath.h>

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeCopier.h>
#include <kalmyr/fields/SoValueText.h>

#include <algorithm>

SO_FIELD_SOURCE(SoSFPath, SoSField, "SFPath")
SO_FIELD_SOURCE(SoMFPath, SoMField, "MFPath")

namespace {

bool samePath(const SoPath* a, const SoPath* b)
{
    return a == b || (a && b && *a == *b);
}

/// The same way through copied nodes.
SoRef<SoPath> copiedPath(const SoNodeCopier& copier, const SoPath* path)
{
    if (!path || path->isEmpty()) {
        return path ? SoRef<SoPath>(new SoPath) : SoRef<SoPath>();
    }
    SoRef<SoPath> copy(new SoPath(copier.resolve(path->getHead())));
    for (int i = 1; i < path->getLength(); ++i) {
        copy->append(copier.resolve(path->getNode(i)), path->getIndex(i));
    }
    return copy;
}

bool appendChild(SoFieldReader& in, SoPath* path, std::int32_t index)
{
    const SoChildList* children =
        path->getTail() ? path->getTail()->getInternalChildren() : nullptr;
    if (!children || index < 0 || index >= children->getLength()) {
        return in.text.fail("expected the index of a child");
    }
    path->append(index);
    return true;
}

bool readPath(SoFieldReader& in, SoRef<SoPath>& path)
{
    if (in.text.acceptWord("NULL")) {
        path = nullptr;
        return true;
    }
    if (!in.text.acceptWord("Path")) {
        return in.text.fail("expected Path or NULL");
    }
    SoNode* head = nullptr;
    if (!in.text.expect('{') || !in.readNode(head)) {
        return false;
    }
    path = head ? new SoPath(head) : new SoPath;
    if (!in.text.expect('[')) {
        return false;
    }
    while (!in.text.accept(']')) {
        std::int32_t index = 0;
        if (!in.text.readInt(index) || !appendChild(in, path.get(), index)) {
            return false;
        }
    }
    return in.text.expect('}');
}

void writePath(SoFieldWriter& out, const SoPath* path)
{
    if (!path) {
        out.text += "NULL";
        return;
    }
    out.text += "Path { ";
    out.writeNode(path->getHead());
    out.text += " [";
    for (int i = 1; i < path->getLength(); ++i) {
        out.text += i > 1 ? ", " : " ";
        kalmyr::writeText(out.text, path->getIndex(i));
    }
    out.text += " ] }";
}

} // namespace

void SoSFPath::setValue(SoPath* path)
{
    const SoRef<SoPath> old = m_path;
    m_path = path;
    valueChanged();
}

bool SoSFPath::isSame(const SoField& other) const
{
    return other.getTypeId() == getTypeId()
           && samePath(static_cast<const SoSFPath&>(other).getValue(), getValue());
}

void SoSFPath::copyFrom(const SoField& other)
{
    setValue(static_cast<const SoSFPath&>(other).getValue());
}

void SoSFPath::copyWith(SoNodeCopier& copier, const SoField& other)
{
    setValue(copiedPath(copier, static_cast<const SoSFPath&>(other).getValue()).get());
}

bool SoSFPath::readValue(SoFieldReader& in)
{
    SoRef<SoPath> path;
    if (!readPath(in, path)) {
        return false;
    }
    setValue(path.get());
    return true;
}

void SoSFPath::writeValue(SoFieldWriter& out) const
{
    writePath(out, getValue());
}

void SoMFPath::setValue(SoPath* path)
{
    m_paths = {SoRef<SoPath>(path)};
    valueChanged();
}

void SoMFPath::set1Value(int index, SoPath* path)
{
    evaluate();
    const SoRef<SoPath> keep(path);
    if (index >= getNum()) {
        m_paths.resize(static_cast<std::size_t>(index) + 1);
    }
    m_paths[static_cast<std::size_t>(index)] = keep;
    valueChanged();
}

int SoMFPath::find(const SoPath* path) const
{
    evaluate();
    const auto at = std::find_if(m_paths.begin(), m_paths.end(),
                                 [path](const auto& p) { return samePath(p.get(), path); });
    return at == m_paths.end() ? -1 : static_cast<int>(at - m_paths.begin());
}

void SoMFPath::setNum(int num)
{
    evaluate();
    m_paths.resize(static_cast<std::size_t>(std::max(num, 0)));
    valueChanged();
}

void SoMFPath::deleteValues(int start, int count)
{
    const int num = getNum();
    if (start < 0 || start >= num || count == 0) {
        return;
    }
    const int n = count < 0 ? num - start : std::min(count, num - start);
    m_paths.erase(m_paths.begin() + start, m_paths.begin() + start + n);
    valueChanged();
}

void SoMFPath::insertSpace(int start, int count)
{
    if (start < 0 || count <= 0) {
        return;
    }
    m_paths.resize(static_cast<std::size_t>(std::max(getNum(), start)));
    m_paths.insert(m_paths.begin() + start, static_cast<std::size_t>(count), SoRef<SoPath>());
    valueChanged();
}

bool SoMFPath::isSame(const SoField& other) const
{
    if (other.getTypeId() != getTypeId()) {
        return false;
    }
    const auto& paths = static_cast<const SoMFPath&>(other);
    return std::equal(m_paths.begin(), m_paths.begin() + getNum(), paths.m_paths.begin(),
                      paths.m_paths.begin() + paths.getNum(),
                      [](const auto& a, const auto& b) { return samePath(a.get(), b.get()); });
}

void SoMFPath::copyFrom(const SoField& other)
{
    const auto& paths = static_cast<const SoMFPath&>(other);
    paths.evaluate();
    m_paths = paths.m_paths;
    valueChanged();
}

void SoMFPath::copyWith(SoNodeCopier& copier, const SoField& other)
{
    std::vector<SoRef<SoPath>> copies;
    for (const auto& path : static_cast<const SoMFPath&>(other).m_paths) {
        copies.push_back(copiedPath(copier, path.get()));
    }
    m_paths = std::move(copies);
    valueChanged();
}

bool SoMFPath::readValue(SoFieldReader& in)
{
    if (in.text.accept('[')) {
        return readList(in);
    }
    SoRef<SoPath> path;
    if (!readPath(in, path)) {
        return false;
    }
    setValue(path.get());
    return true;
}

bool SoMFPath::readList(SoFieldReader& in)
{
    std::vector<SoRef<SoPath>> paths;
    while (!in.text.accept(']')) {
        if (!readPath(in, paths.emplace_back())) {
            return false;
        }
    }
    m_paths = std::move(paths);
    valueChanged();
    return true;
}

bool SoMFPath::read1Value(int index, SoFieldReader& in)
{
    SoRef<SoPath> path;
    if (!readPath(in, path)) {
        return false;
    }
    set1Value(index, path.get());
    return true;
}

void SoMFPath::write1Value(int index, SoFieldWriter& out) const
{
    writePath(out, (*this)[index]);
}
