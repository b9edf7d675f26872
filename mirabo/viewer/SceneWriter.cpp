#include "mirabo/viewer/SceneWriter.h"

#include "mirabo/core/ErrorScope.h"
#include "mirabo/extender/private/GraphReading.h"

#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/base/SoError.h>
#include <kalmyr/core/SoBase.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoToVRML2Action.h>
#include <kalmyr/io/SoToVRMLAction.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodekits/SoBaseKit.h>
#include <kalmyr/nodes/SoFile.h>
#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLInline.h>

#include <QDir>
#include <QFileInfo>
#include <QScopedValueRollback>

#include <unordered_set>
#include <utility>
#include <vector>

namespace mirabo {

namespace {

/// Names in VRML files: "+", the default, is no character of theirs.
constexpr char kVrmlInstancePrefix[] = "_";
constexpr char kSceneChanges[] = "another thread is changing the scene";

/// Set while the files that a scene refers to are written: those that they refer to stay.
bool s_writingReferenced = false;

bool isVrml(SceneFileFormat format)
{
    return format == SceneFileFormat::Vrml1 || format == SceneFileFormat::Vrml2;
}

/// Lets searches look into files and kits for a scope.
class SearchEverywhere {
public:
    SearchEverywhere() : m_files(SoFile::getSearchOK()), m_kits(SoBaseKit::isSearchingChildren())
    {
        SoFile::setSearchOK(true);
        SoBaseKit::setSearchingChildren(true);
    }
    ~SearchEverywhere()
    {
        SoFile::setSearchOK(m_files);
        SoBaseKit::setSearchingChildren(m_kits);
    }
    SearchEverywhere(const SearchEverywhere&) = delete;
    SearchEverywhere& operator=(const SearchEverywhere&) = delete;

private:
    bool m_files;
    bool m_kits;
};

/// The scene as a VRML format has it; null when it cannot be converted.
SoRef<SoNode> converted(SoNode* node, SceneFileFormat format)
{
    if (format == SceneFileFormat::Vrml1) {
        SoToVRMLAction action;
        action.apply(node);
        return SoRef<SoNode>(action.getVRMLSceneGraph());
    }
    if (format == SceneFileFormat::Vrml2) {
        SoToVRML2Action action;
        action.reuseAppearanceNodes(true);
        action.reusePropertyNodes(true);
        action.reuseGeometryNodes(true);
        action.apply(node);
        return SoRef<SoNode>(action.getVRML2SceneGraph());
    }
    return {};
}

/// The file that a node stands for, and what it holds of it.
struct ReferencedFile {
    QString name;
    SoRef<SoNode> content;
};

QString toQString(const SbString& text)
{
    return QString::fromUtf8(text.getString());
}

ReferencedFile referencedFile(SoNode* node)
{
    if (node->isOfType(SoFile::getClassTypeId())) {
        auto* file = static_cast<SoFile*>(node);
        const SoChildList* children = file->getInternalChildren();
        const bool hasContent = children && children->getLength() > 0;
        return {toQString(file->name.getValue()),
                SoRef<SoNode>(hasContent ? (*children)[0] : nullptr)};
    }
    if (node->isOfType(SoWWWInline::getClassTypeId())) {
        auto* link = static_cast<SoWWWInline*>(node);
        return {toQString(link->name.getValue()), SoRef<SoNode>(link->getChildData())};
    }
    if (node->isOfType(SoVRMLInline::getClassTypeId())) {
        auto* link = static_cast<SoVRMLInline*>(node);
        if (link->url.getNum() > 0)
            return {toQString(link->url[0]), SoRef<SoNode>(link->getChildData())};
    }
    return {};
}

std::vector<SoRef<SoNode>> nodesThatReferToFiles(SoNode* root)
{
    const SearchEverywhere everywhere;
    std::vector<SoRef<SoNode>> nodes;
    std::unordered_set<const SoNode*> seen;
    for (const SoType type : {SoFile::getClassTypeId(), SoWWWInline::getClassTypeId(),
                              SoVRMLInline::getClassTypeId()}) {
        SoSearchAction search;
        search.setType(type);
        search.setInterest(SoSearchAction::ALL);
        search.setSearchingAll(true);
        search.apply(root);
        for (const auto& path : search.getPaths())
            if (seen.insert(path->getTail()).second)
                nodes.emplace_back(path->getTail());
    }
    return nodes;
}

} // namespace

SceneWriter::SceneWriter(Dialogs dialogs, bool isVrmlScene)
    : m_dialogs(std::move(dialogs)), m_isVrmlScene(isVrmlScene)
{
}

SceneWriter::Result SceneWriter::write(const Content& content, const QString& fileName,
                                       SceneFileFormat format)
{
    if (!content.node)
        return {};
    if (format == SceneFileFormat::Detect)
        format = detectSceneFormat(fileName);
    if (format == SceneFileFormat::Detect || headerOf(format).isEmpty())
        return {};
    const Content original = content; // the dialogs may see the end of what it came from
    Content written = content;
    if (isVrml(format)) {
        const GraphReading reading;
        if (!reading) {
            m_dialogs.tellNotWritten(fileName, kSceneChanges);
            return {};
        }
        written = {converted(original.node.get(), format), false};
    }
    if (!written.node)
        return {};
    if (!m_isVrmlScene && !s_writingReferenced)
        writeReferencedFiles(original.node.get()); // asks, so not under the lock
    if (!writeFile(written, fileName, format))
        return {};
    return {true, written.node == original.node ? SoRef<SoNode>() : written.node};
}

bool SceneWriter::writeFile(const Content& content, const QString& fileName, SceneFileFormat format)
{
    if (isVrml(format))
        SoBase::setInstancePrefix(kVrmlInstancePrefix); // for all that is written from now on
    SoOutput output;
    output.setCompression(isPackedName(fileName));
    bool isOpen = false;
    {
        const FirstError<SoError> error; // told by a box
        isOpen = output.openFile(fileName.toUtf8().constData());
    }
    if (!isOpen) {
        m_dialogs.tellNotCreated(fileName);
        return false;
    }
    output.setHeaderString(headerOf(format).toUtf8().constData());
    output.setBinary(format == SceneFileFormat::KalmyrBinary);
    QString reason;
    bool isWritten = false;
    {
        const FirstError<SoError> error;
        const GraphReading reading;
        if (reading) {
            SoWriteAction action(&output);
            action.setRootWritten(!content.childrenOnly);
            action.apply(content.node.get());
            isWritten = output.closeFile();
        }
        reason = reading ? error.text() : kSceneChanges;
    }
    if (!isWritten)
        m_dialogs.tellNotWritten(fileName, reason);
    return isWritten;
}

void SceneWriter::writeReferencedFiles(SoNode* node)
{
    std::vector<SoRef<SoNode>> nodes;
    {
        const GraphReading reading;
        if (!reading)
            return;
        nodes = nodesThatReferToFiles(node);
    }
    const QScopedValueRollback<bool> writing(s_writingReferenced, true);
    for (const SoRef<SoNode>& link : nodes)
        writeReferencedFile(link.get());
}

void SceneWriter::writeReferencedFile(SoNode* node)
{
    ReferencedFile file;
    {
        const GraphReading reading;
        if (!reading)
            return;
        file = referencedFile(node);
    }
    // Only files that are there are ever rewritten.
    if (!file.content || file.name.isEmpty() || !QFileInfo(file.name).isFile())
        return;
    if (m_dialogs.confirmOverwrite(file.name))
        write({file.content}, file.name, SceneFileFormat::Detect);
}

} // namespace mirabo
