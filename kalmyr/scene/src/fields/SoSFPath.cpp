#include <kalmyr/fields/SoSFPath.h>

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeCopier.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueText.h>

#include "core/NodeFields.h"

SO_FIELD_SOURCE(SoSFPath, SoSField, "SFPath")
SO_FIELD_SOURCE(SoMFPath, SoMField, "MFPath")

namespace {

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

/// Behind the word FIELD.
bool appendFromField(SoFieldReader& in, SoPath* path)
{
    std::string_view name;
    std::int32_t index = 0;
    if ((!in.text.readWord(name) && !in.text.readName(name)) || !in.text.readInt(index))
        return in.text.fail("expected the name of a field and an index");
    SoNode* tail = path->getTail();
    const SoField* field = tail ? tail->getField(SbName::find(name)) : nullptr;
    SoNode* node = nullptr;
    if (field && field->isOfType(SoSFNode::getClassTypeId()) && index == 0) {
        node = static_cast<const SoSFNode*>(field)->getValue();
    } else if (field && field->isOfType(SoMNodeField::getClassTypeId())) {
        const auto& nodes = static_cast<const SoMNodeField*>(field)->getValues();
        if (index >= 0 && static_cast<std::size_t>(index) < nodes.size())
            node = nodes[static_cast<std::size_t>(index)];
    }
    if (!node)
        return in.text.fail("expected a field with a node in front of this");
    path->append(node, -1);
    return true;
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

} // namespace

bool SoSFPath::readObject(SoFieldReader& in, SoRef<SoPath>& path)
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
        if (in.text.acceptWord("FIELD")) {
            if (!appendFromField(in, path.get()))
                return false;
            continue;
        }
        if (!in.text.readInt(index) || !appendChild(in, path.get(), index)) {
            return false;
        }
    }
    return in.text.expect('}');
}

void SoSFPath::writeObject(SoFieldWriter& out, const SoPath* path)
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
        int index = path->getIndex(i);
        if (index < 0) {
            const SoNode* above = path->getNode(i - 1);
            const SoField* field = kalmyr::detail::findNodeField(above, path->getNode(i), index);
            out.text += "FIELD ";
            out.text += above->getFieldName(field).view();
            out.text += ' ';
        }
        kalmyr::writeText(out.text, index);
    }
    out.text += " ] }";
}

void SoSFPath::copyWith(SoNodeCopier& copier, const SoField& other)
{
    setValue(copiedPath(copier, static_cast<const SoSFPath&>(other).getValue()).get());
}

bool SoMFPath::readObject(SoFieldReader& in, SoRef<SoPath>& path)
{
    return SoSFPath::readObject(in, path);
}

void SoMFPath::writeObject(SoFieldWriter& out, const SoPath* path)
{
    SoSFPath::writeObject(out, path);
}

void SoMFPath::copyWith(SoNodeCopier& copier, const SoField& other)
{
    std::vector<SoRef<SoPath>> copies;
    for (const SoRef<SoPath>& path : static_cast<const SoMFPath&>(other).values())
        copies.push_back(copiedPath(copier, path.get()));
    assign(std::move(copies));
}
