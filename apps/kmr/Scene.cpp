#include "Scene.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoReadError.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoUnknownNode.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>

#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

struct FormatName {
    SoInput::Format format;
    const char* name;
};
constexpr FormatName kFormats[] = {{SoInput::KALMYR_ASCII, "kalmyr-ascii"},
                                   {SoInput::KALMYR_BINARY, "kalmyr-binary"},
                                   {SoInput::VRML1, "vrml1"},
                                   {SoInput::VRML2, "vrml2"}};

/// An input that gathers remarks and shows its progress.
class WatchedInput final : public SoInput {
public:
    explicit WatchedInput(Scene& scene) : m_scene(scene) {}
    ~WatchedInput() override
    {
        if (m_shown)
            std::fputs("\r\033[K", stderr);
    }
    void warn(const SbString& fileName, int line, int column, const SbString& text) override
    {
        m_scene.warnings.push_back({fileName.toStdString(), line, column, text.toStdString()});
    }
    void progress(std::size_t done, std::size_t total) override
    {
        constexpr int kWidth = 40;
        if (!m_watched || total == 0 || secondsSince(m_start) < 1)
            return;
        const int filled = static_cast<int>(done * kWidth / total);
        std::fprintf(stderr, "\r[%.*s%*s] %3d%%", filled,
                     "########################################", kWidth - filled, "",
                     static_cast<int>(done * 100 / total));
        std::fflush(stderr);
        m_shown = true;
    }

private:
    Scene& m_scene;
    const Clock::time_point m_start = Clock::now();
    const bool m_watched = isatty(STDERR_FILENO);
    bool m_shown = false;
};

std::atomic<SoInput*> s_reading = nullptr;

/// Lets SIGINT stop an input while this lives; once: a second one is not held back. A program that
/// was started deaf to it stays so.
class Interruption {
public:
    explicit Interruption(SoInput& in)
    {
        s_reading = &in;
        struct sigaction action = {};
        action.sa_handler = [](int) {
            if (SoInput* reading = s_reading)
                reading->stop();
        };
        action.sa_flags = static_cast<int>(SA_RESETHAND); // and no SA_RESTART: pipes may wait
        sigaction(SIGINT, nullptr, &m_before);
        if (m_before.sa_handler != SIG_IGN)
            sigaction(SIGINT, &action, nullptr);
    }
    ~Interruption()
    {
        sigaction(SIGINT, &m_before, nullptr);
        s_reading = nullptr;
    }
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

private:
    struct sigaction m_before = {};
};

void onReadError(const SoError* error, void* scene)
{
    const auto* read = static_cast<const SoReadError*>(error);
    static_cast<Scene*>(scene)->errors.push_back({read->getFileName().toStdString(),
                                                  read->getLine(), read->getColumn(),
                                                  read->getMessage().toStdString()});
}

void onError(const SoError* error, void* scene)
{
    auto* self = static_cast<Scene*>(scene);
    self->errors.push_back({self->file, 0, 0, error->getDebugString().toStdString()});
}

void onDebugError(const SoError* error, void* scene)
{
    auto* self = static_cast<Scene*>(scene);
    self->warnings.push_back({self->file, 0, 0, error->getDebugString().toStdString()});
}

template <class Group>
SoRef<SoNode> groupOf(const std::vector<SoRef<SoNode>>& nodes)
{
    SoRef<Group> group(new Group);
    for (const SoRef<SoNode>& node : nodes)
        group->addChild(node.get());
    return group;
}

/// What VRML97 files have side by side other formats have, too.
bool isVrml97Only(const std::vector<SoRef<SoNode>>& nodes)
{
    return std::all_of(nodes.begin(), nodes.end(), [](const SoRef<SoNode>& node) {
        const auto* unknown = node->isOfType(SoUnknownNode::getClassTypeId())
                                  ? static_cast<const SoUnknownNode*>(node.get())
                                  : nullptr;
        const SbName& type = unknown ? unknown->getUnknownTypeName() : node->getTypeId().getName();
        return type.view().starts_with("VRML");
    });
}

bool readNodes(SoInput& in, std::vector<SoRef<SoNode>>& nodes)
{
    if (in.getFormat() == SoInput::UNKNOWN_FORMAT)
        return SoDB::readAll(&in) != nullptr; // says what is wrong
    for (;;) {
        SoNode* node = nullptr;
        if (!SoDB::read(&in, node))
            return false;
        if (!node)
            return true;
        nodes.emplace_back(node);
    }
}

} // namespace

Scene readScene(const std::string& file, bool countTextToo)
{
    Scene scene;
    scene.file = file;
    const Listener listener(scene);
    WatchedInput in(scene);
    const Interruption interruption(in);
    const auto start = Clock::now();
    const bool opened = in.openFile(SbString(file));
    scene.compressed = in.isCompressed();
    if (opened) {
        scene.format = in.getFormat();
        scene.header = in.getHeader().toStdString();
        const SoTokenizer& text = in.getTokenizer();
        const std::size_t begin = text.getOffset();
        scene.ok = readNodes(in, scene.nodes);
        scene.seconds = secondsSince(start);
        const bool isText =
            scene.format != SoInput::KALMYR_BINARY && scene.format != SoInput::UNKNOWN_FORMAT;
        if (countTextToo && isText && !in.isStopped())
            scene.parsed = countText({text.getText() + begin, text.getSize() - begin});
    } else {
        scene.seconds = secondsSince(start);
    }
    scene.stopped = in.isStopped(); // also when all had been read just then
    scene.ok = scene.ok && !scene.stopped;
    if (!scene.ok)
        scene.nodes.clear();
    const bool isVrml97 =
        scene.format == SoInput::VRML2 || (!scene.nodes.empty() && isVrml97Only(scene.nodes));
    scene.isRootOwn = isVrml97 || scene.nodes.size() != 1;
    scene.root = isVrml97          ? groupOf<SoVRMLGroup>(scene.nodes)
                 : scene.isRootOwn ? groupOf<SoSeparator>(scene.nodes)
                                   : scene.nodes[0];
    if (scene.ok)
        SoDB::keepUnusedPrototypes(&in, scene.root.get());
    return scene;
}

const char* formatName(SoInput::Format format)
{
    for (const FormatName& one : kFormats)
        if (one.format == format)
            return one.name;
    return "unknown";
}

SoInput::Format formatOfName(std::string_view name)
{
    for (const FormatName& one : kFormats)
        if (one.name == name)
            return one.format;
    return SoInput::UNKNOWN_FORMAT;
}

int printErrors(const Scene& scene)
{
    constexpr int kInterrupted = 128 + SIGINT; // as shells have it
    if (scene.stopped) {
        std::fprintf(stderr, "kmr: reading %s was stopped\n", scene.file.c_str());
        return kInterrupted;
    }
    for (const Remark& error : scene.errors) {
        if (error.line > 0) {
            std::fprintf(stderr, "%s:%d:%d: error: %s\n", error.file.c_str(), error.line,
                         error.column, error.message.c_str());
        } else {
            std::fprintf(stderr, "%s: error: %s\n", error.file.c_str(), error.message.c_str());
        }
    }
    return scene.ok ? 0 : 1;
}

Listener::Listener(Scene& scene)
{
    SoReadError::setHandlerCallback(onReadError, &scene);
    SoError::setHandlerCallback(onError, &scene);
    SoDebugError::setHandlerCallback(onDebugError, &scene);
}

Listener::~Listener()
{
    SoReadError::setHandlerCallback(nullptr);
    SoError::setHandlerCallback(nullptr);
    SoDebugError::setHandlerCallback(nullptr);
}

ErrorPrinter::ErrorPrinter(const std::string& file)
{
    const auto print = [](const SoError* error, void* data) {
        const std::string& name = *static_cast<const std::string*>(data);
        std::string message = error->getDebugString().toStdString();
        if (message.starts_with(name + ": "))
            message.erase(0, name.size() + 2);
        const auto* debug = dynamic_cast<const SoDebugError*>(error);
        const bool isError = !debug || debug->getSeverity() == SoDebugError::SEV_ERROR;
        std::fprintf(stderr, "%s: %s: %s\n", name.c_str(), isError ? "error" : "warning",
                     message.c_str());
    };
    SoError::setHandlerCallback(print, const_cast<std::string*>(&file));
}

ErrorPrinter::~ErrorPrinter()
{
    SoError::setHandlerCallback(nullptr);
}
