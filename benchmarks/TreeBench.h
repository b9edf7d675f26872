#pragma once

#include "mirabo/core/Messages.h"
#include "mirabo/tree/SoMiraboTreeView.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCube.h>

#include <QApplication>
#include <QTreeWidget>

#include <benchmark/benchmark.h>

#include <malloc.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <ctime>
#include <vector>

/// What the benchmarks of the scene tree share: graphs of a given shape, and the same rows in a
/// bare tree widget whose texts are supplied when asked for, the floor of all figures.
namespace treebench {

/// Children of a group: 10, 1000, or all rows.
enum Shape { Balanced = 10, Wide = 1000, Flat = INT_MAX };

inline SoNode* makeNode(int i, bool isGroup)
{
    if (isGroup)
        return i % 3 ? new SoGroup : new SoSeparator;
    switch (i % 3) {
    case 0:
        return new SoMaterial;
    case 1:
        return new SoTransform;
    default:
        return new SoCube;
    }
}

/// A graph of `count` nodes in breadth-first order; not referenced.
inline SoGroup* makeGraph(int count, Shape shape)
{
    SoDB::init();
    const long fan = shape;
    std::vector<SoGroup*> groups{new SoGroup};
    for (int i = 1; i < count; ++i) {
        const bool isGroup = i * fan + 1 < count;
        SoNode* node = makeNode(i, isGroup);
        groups[static_cast<std::size_t>((i - 1) / fan)]->addChild(node);
        if (isGroup)
            groups.push_back(static_cast<SoGroup*>(node));
    }
    return groups.front();
}

/// A thousand occurrences of one group of nodes, `count` rows in all.
inline SoGroup* makeSharedGraph(int count)
{
    SoDB::init();
    constexpr int kUses = 1000;
    auto* shared = new SoSeparator;
    for (int i = 1; i < (count - 1) / kUses; ++i)
        shared->addChild(makeNode(i, false));
    auto* root = new SoGroup;
    for (int i = 0; i < kUses; ++i)
        root->addChild(shared);
    return root;
}

/// The floor's own idea of a scene, as small as it gets.
struct PlainNode {
    std::vector<PlainNode*> children;
    int references = 1;
    char name[20] = {};
};

struct PlainScene {
    explicit PlainScene(int count, Shape shape) : nodes(static_cast<std::size_t>(count))
    {
        for (int i = 0; i < count; ++i) {
            PlainNode& node = nodes[static_cast<std::size_t>(i)];
            std::snprintf(node.name, sizeof node.name, "node_%d", i);
            if (i > 0)
                nodes[static_cast<std::size_t>((i - 1) / static_cast<long>(shape))]
                    .children.push_back(&node);
        }
    }
    std::vector<PlainNode> nodes;
};

class PlainItem final : public QTreeWidgetItem {
public:
    explicit PlainItem(const PlainNode* node) : m_node(node) {}
    PlainItem(QTreeWidgetItem* parent, const PlainNode* node)
        : QTreeWidgetItem(parent), m_node(node)
    {
    }
    QVariant data(int column, int role) const override
    {
        if (role != Qt::DisplayRole || column > 2)
            return QTreeWidgetItem::data(column, role);
        if (column == 2)
            return QString::number(m_node->references);
        return QString::fromLatin1(column == 0 ? "Group" : m_node->name);
    }

private:
    const PlainNode* m_node;
};

inline void fillPlain(PlainItem* item, const PlainNode& node)
{
    for (const PlainNode* child : node.children)
        fillPlain(new PlainItem(item, child), *child);
}

/// A bare tree like ours: five columns, rows of one height, shown.
inline void setUp(QTreeWidget& widget)
{
    widget.setColumnCount(5);
    widget.setUniformRowHeights(true);
    widget.resize(600, 800);
    widget.show();
}

/// Time that this process was at work: nothing here waits for anything, and what else the machine
/// does is left out.
inline double nowMs()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

/// Everything that is put off to the event loop, painting included.
inline void settle()
{
    QApplication::sendPostedEvents();
    QApplication::processEvents();
    QApplication::processEvents();
}

template <class F>
double timed(F f)
{
    const double start = nowMs();
    f();
    return nowMs() - start;
}

inline double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

inline double heapBytes()
{
    const auto info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

/// Touches memory and gives it back, in another process: pages that a virtual machine has not used
/// for long are dear at their first touch.
inline void warmMemory()
{
    constexpr std::size_t kBytes = std::size_t(2) << 30;
    const pid_t child = fork();
    if (child == 0) {
        void* memory =
            mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory != MAP_FAILED)
            for (std::size_t i = 0; i < kBytes; i += 4096)
                static_cast<char*>(memory)[i] = 1;
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
}

/// A main function with an application that needs no display.
inline int run(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    application.setProperty(mirabo::kBatchProperty, true); // nobody is there to be asked
    SoDB::init();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

/// A view of its own, shown, on a graph; the rows below the root are in sight.
struct Watched {
    explicit Watched(SoGroup* graph) : root(graph)
    {
        view.resize(600, 800);
        view.show();
        view.setSceneGraph(graph);
        settle();
    }
    SoRef<SoGroup> root;
    SoMiraboTreeView view;
};

} // namespace treebench
