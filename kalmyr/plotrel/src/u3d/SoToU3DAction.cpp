#include <kalmyr/plotrel/SoToU3DAction.h>

#include "U3DCollector.h"
#include "U3DFile.h"
#include "U3DScene.h"

#include <kalmyr/base/SbFileReplacement.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoError.h>
#include <kalmyr/cameras/SoCamera.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/elements/SoLightElement.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/lights/SoLight.h>
#include <kalmyr/shapes/SoShape.h>
#include <kalmyr/vrml/SoVRMLLight.h>
#include <kalmyr/vrml/SoVRMLShape.h>
#include <kalmyr/vrml/SoVRMLViewpoint.h>

#include <cmath>
#include <cstdio>
#include <utility>

using namespace kalmyr::detail;

SO_ACTION_SOURCE(SoToU3DAction, SoAction, "ToU3DAction")

namespace {

/// The scene that is being collected, with what collects it.
struct Collected {
    U3DScene scene;
    U3DCollector collector{scene};
};

} // namespace

struct SoToU3DAction::Job {
    SbFileReplacement file;
    std::string fileName;
    U3DOptions options;
    std::vector<std::string> viewNames;
    std::unique_ptr<Collected> collected;
    bool isStopped = false;
    bool isTooLarge = false;

    void beginScene()
    {
        collected = std::make_unique<Collected>();
        isStopped = isTooLarge = false;
    }
    /// False when the callback stops the work.
    bool goesOn(float share)
    {
        isStopped = isStopped || (options.progress && !options.progress(share));
        return !isStopped;
    }

    static U3DCollector& collectorOf(SoAction* action)
    {
        return static_cast<SoToU3DAction*>(action)->m_job->collected->collector;
    }
    static void shape(SoAction* action, SoNode* node);
    static void light(SoAction* action, SoNode* node);
    static void camera(SoAction* action, SoNode* node);
    static void viewpoint(SoAction* action, SoNode* node);
};

void SoToU3DAction::Job::shape(SoAction* action, SoNode* node)
{
    // In a VRML97 world it is the shape that has the name, seldom its geometry.
    const SoNode* named = node;
    const SoNode* above = action->getCurNode(1);
    if (!node->getName() && above && above->isOfType(SoVRMLShape::getClassTypeId()))
        named = above;
    collectorOf(action).shape(static_cast<SoShape*>(node), named, action->getState());
}

/// Lights that are on add themselves to those of the state.
void SoToU3DAction::Job::light(SoAction* action, SoNode* node)
{
    SoState* state = action->getState();
    const std::size_t before = SoLightElement::get(state).size();
    node->doAction(action);
    const auto& lights = SoLightElement::get(state);
    for (std::size_t i = before; i < lights.size(); ++i)
        collectorOf(action).light(node, lights[i]);
}

void SoToU3DAction::Job::camera(SoAction* action, SoNode* node)
{
    node->doAction(action);
    const SbMatrix& toWorld = SoModelMatrixElement::get(action->getState());
    SbViewVolume volume = static_cast<SoCamera*>(node)->getViewVolume();
    volume.transform(toWorld);
    collectorOf(action).camera(node, volume, toWorld);
}

void SoToU3DAction::Job::viewpoint(SoAction* action, SoNode* node)
{
    node->doAction(action);
    collectorOf(action).viewpoint(static_cast<SoVRMLViewpoint*>(node),
                                  SoModelMatrixElement::get(action->getState()));
}

void SoToU3DAction::initMethods()
{
    addMethod(SoNode::getClassTypeId(), callDoAction);
    addMethod(SoShape::getClassTypeId(), Job::shape);
    addMethod(SoLight::getClassTypeId(), Job::light);
    addMethod(SoCamera::getClassTypeId(), Job::camera);
    // The VRML97 module may not be initialised.
    if (!SoVRMLLight::getClassTypeId().isBad())
        addMethod(SoVRMLLight::getClassTypeId(), Job::light);
    if (!SoVRMLViewpoint::getClassTypeId().isBad())
        addMethod(SoVRMLViewpoint::getClassTypeId(), Job::viewpoint);
}

SoToU3DAction::SoToU3DAction() : m_job(std::make_unique<Job>())
{
    // The toolkit, and with it the types of nodes, may have been started anew since the last one.
    static int knownTypes = -1;
    if (!SoShape::getClassTypeId().isBad() && knownTypes != SoType::getNumTypes()) {
        initClass();
        knownTypes = SoType::getNumTypes();
    }
    setHooked(true);
}

SoToU3DAction::~SoToU3DAction()
{
    if (isOpen() && m_job->collected->scene.numModels > 0)
        closeFile();
}

// ---- settings

void SoToU3DAction::setCompression(bool on)
{
    m_job->options.compressed = on;
}

bool SoToU3DAction::isCompressed() const
{
    return m_job->options.compressed;
}

void SoToU3DAction::setMetersPerUnit(double metres)
{
    if (kalmyr::holds(std::isfinite(metres) && metres >= 0, "a length of 0 m or more"))
        m_job->options.metersPerUnit = metres;
}

double SoToU3DAction::getMetersPerUnit() const
{
    return m_job->options.metersPerUnit;
}

void SoToU3DAction::setProgressCallback(ProgressCallback callback)
{
    m_job->options.progress = std::move(callback);
}

bool SoToU3DAction::wasStopped() const
{
    return m_job->isStopped;
}

const std::vector<std::string>& SoToU3DAction::getViewNames() const
{
    return m_job->viewNames;
}

// ---- files

bool SoToU3DAction::openFile(const char* name)
{
    discardFile();
    if (!kalmyr::holds(name, "a file name"))
        return false;
    SbString reason;
    if (!m_job->file.open(name, &reason)) {
        SoError::post("Can not open file %s: %s", name, reason.getString());
        return false;
    }
    m_job->fileName = name;
    m_job->beginScene();
    return true;
}

bool SoToU3DAction::isOpen() const
{
    return m_job->file.isOpen();
}

void SoToU3DAction::discardFile()
{
    m_job->file.discard();
    m_job->collected.reset();
}

bool SoToU3DAction::closeFile()
{
    if (!isOpen())
        return false;
    std::string bytes;
    if (!encode(m_job->fileName.c_str(), bytes)) {
        discardFile();
        return false;
    }
    m_job->collected.reset();
    std::FILE* file = m_job->file.getFile();
    SbString reason;
    // A failed write shows when the bytes are brought to the disk, with its reason.
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    if (m_job->file.commit(&reason))
        return true;
    SoError::post("%s: cannot be written: %s", m_job->fileName.c_str(), reason.getString());
    return false;
}

bool SoToU3DAction::writeToMemory(SoNode* root, std::string& bytes)
{
    bytes.clear();
    if (!kalmyr::holds(root, "a scene"))
        return false;
    std::unique_ptr<Collected> ofFile = std::move(m_job->collected);
    m_job->beginScene();
    collect([&] { SoAction::apply(root); });
    const bool written = encode("U3D", bytes);
    m_job->collected = std::move(ofFile);
    return written;
}

/// Makes the bytes of what was collected; posts errors under the name of the target.
bool SoToU3DAction::encode(const char* target, std::string& bytes)
{
    if (m_job->isStopped || m_job->isTooLarge)
        return false;
    Collected& collected = *m_job->collected;
    if (collected.scene.numModels == 0) {
        SoError::post("%s: there is nothing to write", target);
        return false;
    }
    collected.collector.finish();
    const U3DResult result = writeU3D(collected.scene, m_job->options, bytes);
    if (result == U3DResult::DONE) {
        m_job->viewNames.clear();
        for (const U3DNode& node : collected.scene.nodes) {
            if (node.kind == U3DNode::VIEW)
                m_job->viewNames.push_back(node.name);
        }
        return true;
    }
    bytes.clear();
    m_job->isStopped = result == U3DResult::STOPPED;
    if (result == U3DResult::TOO_LARGE)
        SoError::post("%s: the scene is too large for the format", target);
    return false;
}

// ---- traversal

void SoToU3DAction::apply(SoNode* root)
{
    if (kalmyr::holds(isOpen(), "an open file"))
        collect([&] { SoAction::apply(root); });
}

void SoToU3DAction::apply(SoPath* path)
{
    const SoRef<SoPath> held(path); // a path made for the call dies with it
    if (kalmyr::holds(isOpen(), "an open file"))
        collect([&] { SoAction::apply(path); });
}

void SoToU3DAction::collect(const std::function<void()>& traverse)
{
    if (m_job->isStopped || m_job->isTooLarge)
        return;
    std::size_t& numLeftOut = m_job->collected->scene.numLeftOut;
    numLeftOut = 0;
    traverse();
    if (numLeftOut > 0)
        SoDebugError::postWarning("SoToU3DAction",
                                  "%zu faces, lines or points without a finite place were left out",
                                  numLeftOut);
}

void SoToU3DAction::beginTraversal(SoNode* root)
{
    SoAction::beginTraversal(root);
    if (!m_job->goesOn(0))
        setTerminated(true);
}

namespace {

/// Shapes of VRML97 are no groups: their geometry is what is seen.
bool isGroup(const SoNode* node)
{
    return node->getInternalChildren() && !node->isOfType(SoShape::getClassTypeId());
}

} // namespace

/// Groups that hold others several times over, level upon level, have no end in practice.
bool SoToU3DAction::hasRoom()
{
    constexpr std::size_t kMaxNodes = 2'000'000;
    if (m_job->collected->scene.nodes.size() <= kMaxNodes)
        return true;
    m_job->isTooLarge = true;
    SoError::post("U3D: the scene comes to more than %zu nodes", kMaxNodes);
    return false;
}

bool SoToU3DAction::beforeNode(SoNode* node)
{
    constexpr std::uint64_t kVisitsPerCall = 1024;
    const bool goesOn = getNumVisits() % kVisitsPerCall != 0 || (m_job->goesOn(0) && hasRoom());
    if (!goesOn)
        setTerminated(true);
    else if (isGroup(node))
        m_job->collected->collector.enter(node, SoModelMatrixElement::get(getState()));
    return goesOn;
}

void SoToU3DAction::afterNode(SoNode* node)
{
    if (isGroup(node))
        m_job->collected->collector.leave();
}
