#include <kalmyr/io/SoDB.h>

#include "core/Threads.h"
#include "NodeText.h"
#include "SceneReader.h"
#include "SoReadHooks.h"

#include <kalmyr/actions/SoActionsInit.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoReadError.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/cameras/SoCamerasInit.h>
#include <kalmyr/core/SoCoreInit.h>
#include <kalmyr/core/SoEngine.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/core/SoRecursiveRWLock.h>
#include <kalmyr/details/SoDetailsInit.h>
#include <kalmyr/engines/SoEnginesInit.h>
#include <kalmyr/engines/SoGlobalField.h>
#include <kalmyr/events/SoEventsInit.h>
#include <kalmyr/fields/SoFieldsInit.h>
#include <kalmyr/io/SoToVRML2Action.h>
#include <kalmyr/io/SoToVRMLAction.h>
#include <kalmyr/io/SoUnknownNode.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/lights/SoLightsInit.h>
#include <kalmyr/nodekits/SoNodekitsInit.h>
#include <kalmyr/nodes/SoNodesInit.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/sensors/SoSensorsInit.h>
#include <kalmyr/shapes/SoShapesInit.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVrmlInit.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <vector>

using kalmyr::detail::sceneLock;
using kalmyr::detail::SceneReader;

namespace {

int s_starts = 0;

std::vector<void (*)()>& furtherInits()
{
    static std::vector<void (*)()> list;
    return list;
}

std::vector<SoDB::ReadHook>& readHooks()
{
    static std::vector<SoDB::ReadHook> byType;
    return byType;
}

void initIo()
{
    SoUnknownNode::initClass();
    SoWriteAction::initClass();
    SoToVRMLAction::initClass();
    SoToVRML2Action::initClass();
    kalmyr::detail::installReadHooks();
    kalmyr::detail::installNodeText();
}

/// Lower areas first. What draws stands above this library part and comes by addInit().
constexpr void (*kInits[])() = {
    kalmyr::initCore,    kalmyr::initFields,
    kalmyr::initSensors, kalmyr::initEngines,
    kalmyr::initActions, kalmyr::initEvents,
    kalmyr::initDetails, kalmyr::initNodes,
    kalmyr::initLights,  kalmyr::initCameras,
    kalmyr::initShapes,  kalmyr::initNodekits,
    kalmyr::initVrml,    initIo,
};

/// All nodes of the file; false after a posted error, with none of them left.
bool readNodes(SceneReader& reader, std::vector<SoRef<SoNode>>& nodes)
{
    if (reader.readAll(nodes))
        return true;
    nodes.clear();
    reader.abandon();
    return false;
}

template <class Group>
SoRef<Group> groupOf(const std::vector<SoRef<SoNode>>& nodes)
{
    SoRef<Group> group(new Group);
    group->getChildren()->reserve(static_cast<int>(nodes.size()));
    for (const SoRef<SoNode>& node : nodes)
        group->addChild(node.get());
    return group;
}

} // namespace

void SoDB::init()
{
    if (s_starts++ > 0)
        return;
    for (const auto init : kInits)
        init();
    for (const auto init : furtherInits())
        init();
    kalmyr::makeFieldTables();
}

void SoDB::finish()
{
    if (s_starts == 0) {
        SoDebugError::post("SoDB::finish", "finished more often than started");
        return;
    }
    if (--s_starts == 0) {
        kalmyr::finishVrml();
        kalmyr::finishNodekits();
    }
}

bool SoDB::isInitialized()
{
    return s_starts > 0;
}

void SoDB::addInit(void (*init)())
{
    auto& list = furtherInits();
    if (std::find(list.begin(), list.end(), init) != list.end())
        return;
    list.push_back(init);
    if (isInitialized())
        init();
}

SbString SoDB::getVersion()
{
    return "Kalmyr " KALMYR_VERSION;
}

SceneReader* SoDB::readerOf(SoInput* in, bool headerNeeded)
{
    if (!kalmyr::holds(in, "an input"))
        return nullptr;
    if (!in->m_reader)
        in->m_reader = SceneReader::make(*in, headerNeeded);
    return in->m_reader.get();
}

SoSeparator* SoDB::readAll(SoInput* in)
{
    SceneReader* reader = readerOf(in, true);
    std::vector<SoRef<SoNode>> nodes;
    if (!reader || !readNodes(*reader, nodes))
        return nullptr;
    SoRef<SoSeparator> root;
    if (in->isFileVRML2()) {
        root = new SoSeparator;
        root->addChild(groupOf<SoVRMLGroup>(nodes).get());
    } else if (nodes.size() == 1 && nodes[0]->isOfType(SoSeparator::getClassTypeId())) {
        root = static_cast<SoSeparator*>(nodes[0].get());
    } else {
        root = groupOf<SoSeparator>(nodes);
    }
    nodes.clear();
    reader->keepUnused(in->isFileVRML2() ? root->getChild(0) : root.get());
    // The reader holds what has a name; it must not take the root with it.
    in->m_reader.reset();
    return root.release();
}

SoVRMLGroup* SoDB::readAllVRML(SoInput* in)
{
    if (in && in->isOpen() && !in->isFileVRML2()) {
        SoReadError::post(in->getCurFileName(), 1, 1,
                          "expected the header \"#VRML V2.0 utf8\", found \"%s\"",
                          in->getHeader().getString());
        return nullptr;
    }
    SceneReader* reader = readerOf(in, true);
    std::vector<SoRef<SoNode>> nodes;
    if (!reader || !readNodes(*reader, nodes))
        return nullptr;
    SoRef<SoVRMLGroup> root = groupOf<SoVRMLGroup>(nodes);
    reader->keepUnused(root.get());
    in->m_reader.reset();
    return root.release();
}

bool SoDB::read(SoInput* in, SoNode*& node)
{
    node = nullptr;
    SceneReader* reader = readerOf(in, false);
    if (!reader)
        return false;
    if (reader->readTop(node))
        return true;
    reader->abandon();
    return false;
}

void SoDB::keepUnusedPrototypes(SoInput* in, SoNode* root)
{
    if (in && in->m_reader && root)
        in->m_reader->keepUnused(root);
}

bool SoDB::read(SoInput* in, SoPath*& path)
{
    path = nullptr;
    SceneReader* reader = readerOf(in, false);
    if (!reader)
        return false;
    SoRef<SoPath> result;
    if (!reader->readPath(result)) {
        result.reset();
        reader->abandon();
        return false;
    }
    path = result.release();
    return true;
}

void SoDB::setReadHook(SoType type, ReadHook hook)
{
    const auto index = static_cast<std::size_t>(type.getIndex());
    if (readHooks().size() <= index)
        readHooks().resize(index + 1, nullptr);
    readHooks()[index] = hook;
}

SoDB::ReadHook SoDB::getReadHook(SoType type)
{
    const auto index = static_cast<std::size_t>(type.getIndex());
    return index < readHooks().size() ? readHooks()[index] : nullptr;
}

SoField* SoDB::getGlobalField(const SbName& name)
{
    return SoGlobalField::find(name);
}

SoField* SoDB::createGlobalField(const SbName& name, SoType type)
{
    return SoGlobalField::create(name, type);
}

void SoDB::setRealTimeInterval(const SbTime& interval)
{
    SoGlobalField::setRealTimeInterval(interval);
}

SbTime SoDB::getRealTimeInterval()
{
    return SoGlobalField::getRealTimeInterval();
}

void SoDB::readlock()
{
    sceneLock().readLock();
}

bool SoDB::tryReadlock(const SbTime& patience)
{
    return sceneLock().tryReadLock(
        std::chrono::microseconds(static_cast<std::int64_t>(patience.getValue() * 1e6)));
}

void SoDB::readunlock()
{
    if (!sceneLock().readUnlock())
        SoDebugError::post("SoDB::readunlock", "this thread does not hold the lock");
}

bool SoDB::writelock()
{
    if (kalmyr::detail::writeLock())
        return true;
    SoDebugError::post("SoDB::writelock",
                       "refused: another reading thread waits to become the writer");
    return false;
}

void SoDB::writeunlock()
{
    if (!kalmyr::detail::writeUnlock())
        SoDebugError::post("SoDB::writeunlock", "this thread does not hold the lock");
}

bool SoDB::isWritelocked()
{
    return sceneLock().isWriteLockedByThisThread();
}
