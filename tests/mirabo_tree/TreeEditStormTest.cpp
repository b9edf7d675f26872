#include "TreeEditScene.h"

#include "mirabo/tree/ChildRules.h"
#include "mirabo/tree/MovePlan.h"

#include <kalmyr/core/SoDeathObserver.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/nodekits/SoNodeKitListPart.h>
#include <kalmyr/nodekits/SoShapeKit.h>
#include <kalmyr/nodes/SoFile.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLInline.h>
#include <kalmyr/vrml/SoVRMLSwitch.h>
#include <kalmyr/vrml/SoVRMLTransform.h>

#include <algorithm>
#include <cstdlib>
#include <ostream>
#include <random>
#include <set>
#include <unordered_set>

namespace {

/// The nodes that the test has met and that live.
class LiveNodes final : public SoDeathObserver {
public:
    void meet(const SoNode* node)
    {
        if (m_nodes.insert(node).second)
            node->tellOfDeath();
    }
    void objectDies(const SoBase* object) override { m_nodes.erase(object); }
    std::size_t count() const { return m_nodes.size(); }

private:
    std::unordered_set<const SoBase*> m_nodes;
};

/// What stands below a node, found without the tree's own rules.
std::vector<const SoNode*> nodesBelow(const SoNode* node, bool isVrmlScene)
{
    std::vector<const SoNode*> below;
    const bool isInline = node->isOfType(SoWWWInline::getClassTypeId())
                          || node->isOfType(SoVRMLInline::getClassTypeId());
    const bool isFile = node->isOfType(SoFile::getClassTypeId());
    if (node->getChildren() && !(isVrmlScene && (isInline || isFile)))
        below.assign(node->getChildren()->getNodes().begin(),
                     node->getChildren()->getNodes().end());
    if (isInline && !below.empty())
        below.erase(below.begin());
    if (node->isOfType(SoVRMLParent::getClassTypeId()))
        return below;
    const bool isKit = node->isOfType(SoBaseKit::getClassTypeId());
    const SoFieldData* fields = node->getFieldData();
    for (int i = 0; i < fields->getNumFields(); ++i) {
        const SoField* field = fields->getField(node, i);
        if (field->getFieldType() == SoField::EVENT_IN
            || field->getFieldType() == SoField::INTERNAL)
            break;
        if (field->isOfType(SoSFNode::getClassTypeId())) {
            const SoNode* value = static_cast<const SoSFNode*>(field)->getValue();
            const auto* catalog =
                isKit ? static_cast<const SoBaseKit*>(node)->getNodekitCatalog() : nullptr;
            if (value && catalog && catalog->getParentPartNumber(fields->getFieldName(i)) > 0)
                break;
            if (value)
                below.push_back(value);
        } else if (field->isOfType(SoMFNode::getClassTypeId())
                   || field->isOfType(SoMFUniformShaderParameter::getClassTypeId())) {
            const auto* list = static_cast<const SoMNodeField*>(field);
            if (!list->isBound())
                for (const SoNode* value : list->getValues())
                    if (value)
                        below.push_back(value);
        }
    }
    return below;
}

/// Compares rows with graph; disabled rows stand for nothing. Meets all nodes on its way.
std::string compare(const SoTreeViewItem* row, bool isVrmlScene, LiveNodes& live)
{
    live.meet(row->getNode());
    std::vector<const SoNode*> rows;
    for (int i = 0; i < row->childCount(); ++i)
        if (!row->childItem(i)->isDisabledNode())
            rows.push_back(row->childItem(i)->getNode());
    if (rows != nodesBelow(row->getNode(), isVrmlScene))
        return std::string("other rows below a ")
               + row->getNode()->getTypeId().getName().getString();
    for (int i = 0; i < row->childCount(); ++i)
        if (!row->childItem(i)->isDisabledNode())
            if (std::string fault = compare(row->childItem(i), isVrmlScene, live); !fault.empty())
                return fault;
    return {};
}

/// Where two texts part.
std::string differenceOf(const std::string& a, const std::string& b)
{
    const auto at = static_cast<std::size_t>(
        std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin());
    const std::size_t from = at < 300 ? 0 : at - 300;
    return "\nexpected ..." + a.substr(from, 600) + "\n\nfound ..." + b.substr(from, 600);
}

bool isFull()
{
    return std::getenv("MIRABO_FULL") != nullptr;
}

int numberFrom(const char* variable, int otherwise)
{
    const char* text = std::getenv(variable);
    return text ? std::atoi(text) : otherwise;
}

class Storm {
public:
    Storm(SoMiraboTreeView& view, EditedTree& edited, SoNode* root, unsigned seed)
        : m_view(view), m_edited(edited), m_root(root), m_random(seed)
    {
        build();
    }

    LiveNodes& live() { return m_live; }

    template <class N>
    int below(N n)
    {
        return static_cast<int>(m_random() % static_cast<unsigned>(n));
    }

    /// One more command on the stack. Now and then the user takes some of the last `young` ones
    /// back and does others, or deletes the whole scene by mistake.
    void push(int young, bool isPoint)
    {
        const int done = m_edited.stack.currentIndex() + 1;
        if (below(200) == 0)
            deleteRoot();
        for (int back = below(50) == 0 ? std::min(below(4), young) : 0; back > 0; --back)
            m_edited.stack.undo();
        for (int tries = 0; m_edited.stack.currentIndex() < done; ++tries) {
            ASSERT_LT(tries, 1000) << "nothing can be edited any more";
            lookAround();
            if (isPoint)
                m_lookBefore = lookOf(m_view);
            const int before = m_edited.stack.currentIndex();
            edit();
            ASSERT_LE(m_edited.stack.currentIndex(), before + 1);
            ++m_tries;
        }
    }
    int tries() const { return m_tries; }
    /// What the tree looked like when the last command at a point was given.
    const std::string& lookBefore() const { return m_lookBefore; }

    std::string text()
    {
        std::string text;
        for (SoNode* node : tops())
            text += textOf(node);
        return text;
    }
    std::string check()
    {
        std::string fault = mirabo::checkTree(m_view).toStdString();
        const std::vector<SoNode*> nodes = tops();
        if (fault.empty() && m_view.topLevelItemCount() != static_cast<int>(nodes.size()))
            fault = "a top-level row too many or too few";
        for (std::size_t i = 0; i < nodes.size() && fault.empty(); ++i) {
            const auto* row =
                static_cast<SoTreeViewItem*>(m_view.topLevelItem(static_cast<int>(i)));
            fault = row->getNode() == nodes[i] ? compare(row, mirabo::isVrmlScene(), m_live)
                                               : "another node at the top";
        }
        return fault;
    }

private:
    std::vector<SoNode*> tops()
    {
        if (!m_view.getRoot())
            return {};
        return m_edited.container ? m_edited.container->getChildren()->getNodes()
                                  : std::vector<SoNode*>{m_view.getRoot()};
    }

    void build()
    {
        auto* group = static_cast<SoGroup*>(m_root);
        for (int i = 0; i < 3; ++i) {
            auto* separator = new SoSeparator;
            separator->setName(SbName(("part" + std::to_string(i)).c_str()));
            auto* world = new SoVRMLTransform;
            auto* holder = new FieldHolder;
            auto* parameters = new ParameterHolder;
            auto* kit = new SoShapeKit;
            auto* file = new SoFile;
            auto* web = new SoWWWInline;
            auto* link = new SoVRMLInline;
            auto* choice = new SoVRMLSwitch;
            auto* shared = new SoMaterial;
            for (SoNode* node :
                 {static_cast<SoNode*>(separator), static_cast<SoNode*>(world),
                  static_cast<SoNode*>(holder), static_cast<SoNode*>(parameters),
                  static_cast<SoNode*>(kit), static_cast<SoNode*>(file), static_cast<SoNode*>(web),
                  static_cast<SoNode*>(link), static_cast<SoNode*>(choice)})
                group->addChild(node);
            separator->addChild(shared);
            separator->addChild(new SoCube);
            separator->addChild(shared);
            world->addChild(separator);
            world->addChild(new SoVRMLGroup);
            choice->addChild(world);
            holder->one = separator;
            SoNode* const values[] = {shared, nullptr, new SoCube, shared};
            holder->many.setValues(values);
            parameters->parameter.addShaderParameter(shared);
            parameters->parameter.addShaderParameter(new SoTransform);
            kit->setPart("shape", new SoCube);
            kit->setPart("transform", new SoTransform);
            kit->getPart("appearance.material");
            auto* list = static_cast<SoNodeKitListPart*>(kit->getPart("childList"));
            list->addChild(new SoShapeKit);
            list->addChild(new SoShapeKit);
            file->setChildData(new SoCube);
            web->setChildData(separator);
            link->setChildData(new SoCube);
        }
    }

    SoTreeViewItem* anyRow()
    {
        const int count = m_view.topLevelItemCount();
        auto* row = static_cast<SoTreeViewItem*>(m_view.topLevelItem(count > 1 ? below(count) : 0));
        while (row && row->childCount() > 0 && below(5) > 0)
            row = row->childItem(below(row->childCount()));
        return row;
    }

    void deleteRoot()
    {
        m_view.setCurrentItem(m_view.rootItem());
        const std::string look = lookOf(m_view);
        ASSERT_TRUE(m_edited.editor.deleteCurrent());
        ASSERT_EQ(m_view.topLevelItemCount(), 0);
        m_edited.stack.undo();
        ASSERT_EQ(lookOf(m_view), look);
    }

    /// The user chooses, opens and closes, in a tree that is in sight.
    void lookAround()
    {
        m_view.doItemsLayout();
        if (SoTreeViewItem* row = anyRow())
            m_view.setCurrentItem(row);
        if (SoTreeViewItem* row = below(2) ? anyRow() : nullptr)
            row->setExpanded(below(3) > 0);
        if (below(50) == 0)
            QCoreApplication::processEvents();
    }

    SoNode* newNode()
    {
        switch (below(12)) {
        case 0:
            return new SoSeparator;
        case 1:
            return new SoVRMLGroup;
        case 2:
            return new FieldHolder;
        case 3:
            return new SoShapeKit;
        case 4: {
            auto* kit = new SoShapeKit;
            kit->getPart("childList");
            return kit;
        }
        case 5:
            return new SoFile;
        default:
            return new SoCube;
        }
    }

    void edit()
    {
        mirabo::TreeEditor& editor = m_edited.editor;
        SoTreeViewItem* row = static_cast<SoTreeViewItem*>(m_view.currentItem());
        const bool isFullHouse = m_view.context().index.itemCount() > kMostRows;
        if (!row || row == m_view.rootItem()) { // the root stays
            editor.addNode(newNode(), m_view.rootItem());
            return;
        }
        if (m_edited.container && !isFullHouse && below(m_view.topLevelItemCount() * 3) == 0) {
            editor.pasteTopLevel(newNode());
            return;
        }
        switch (isFullHouse ? 0 : below(10)) {
        case 0:
        case 1:
            editor.deleteCurrent();
            break;
        case 2:
        case 3:
            editor.addNode(newNode());
            break;
        case 4:
        case 5:
            editor.moveRow(row, anyRow(), below(3) == 0);
            break;
        case 6:
            editor.addReference(row, anyRow(), below(3) == 0);
            break;
        case 7:
            editor.stepCurrent(static_cast<mirabo::MoveStep>(below(4)));
            break;
        default:
            m_view.ignoreEnable();
        }
    }

    static constexpr std::size_t kMostRows = 700;
    SoMiraboTreeView& m_view;
    EditedTree& m_edited;
    SoNode* m_root;
    std::mt19937 m_random;
    LiveNodes m_live;
    std::string m_lookBefore;
    int m_tries = 0;
};

struct World {
    const char* name;
    bool isVrml;
    bool hasContainer; ///< for further top-level rows
    unsigned seed;

    friend std::ostream& operator<<(std::ostream& out, const World& world)
    {
        return out << world.name;
    }
};

class TreeEditStorm : public TreeTest, public ::testing::WithParamInterface<World> {};

} // namespace

TEST_P(TreeEditStorm, IsUndoneAndRedoneToTheLetter)
{
    const int commands = numberFrom("MIRABO_STORM_COMMANDS", isFull() ? 100000 : 1500);
    // 1: finds the command at fault
    const int every = numberFrom("MIRABO_STORM_EVERY", std::max(10, commands / 1000));
    const SteppingClock clock(.0003); // removals get dear now and then
    root = nullptr;
    SoRef<SoNode> top(GetParam().isVrml ? static_cast<SoNode*>(new SoVRMLGroup) : new SoSeparator);
    std::unique_ptr<Storm> storm;
    {
        EditedTree edited(view);
        const auto seed = static_cast<unsigned>(
            numberFrom("MIRABO_STORM_SEED", static_cast<int>(GetParam().seed)));
        storm = std::make_unique<Storm>(view, edited, top.get(), seed);
        if (GetParam().hasContainer) {
            edited.container = new SoSeparator;
            edited.container->addChild(top.get());
            view.setContainer(edited.container.get());
        }
        view.setSceneGraph(top.get());
        view.expandBelow(nullptr);
        view.show();
        edited.stack.clear();

        struct Point {
            std::string text;
            std::string look; ///< of the first time that it is come back to
        };
        std::vector<Point> points{{storm->text(), {}}};
        for (int i = 1; i <= commands; ++i) {
            storm->push((i - 1) % every, i % every == 0);
            if (HasFatalFailure())
                FAIL() << "command " << i;
            if (i % every != 0)
                continue;
            points.push_back({storm->text(), {}});
            ASSERT_EQ(storm->check(), "") << "after command " << i;
            const std::string look = lookOf(view);
            edited.stack.undo();
            ASSERT_EQ(storm->check(), "") << "after undoing command " << i;
            ASSERT_EQ(lookOf(view), storm->lookBefore()) << "after undoing " << edited.names.back();
            edited.stack.redo();
            ASSERT_EQ(storm->text(), points.back().text);
            ASSERT_EQ(lookOf(view), look) << "after doing again " << edited.names.back();
        }
        ASSERT_EQ(edited.stack.count(), commands);
        pass();
        const std::size_t refused = edited.boxes.size();

        points.back().look = lookOf(view);
        int at = commands;
        const auto go = [&](int to) {
            for (; at > to && edited.boxes.size() == refused; --at)
                edited.stack.undo();
            for (; at < to && edited.boxes.size() == refused; ++at)
                edited.stack.redo();
            if (edited.boxes.size() != refused)
                FAIL() << "refused beside command " << at << ": " << edited.boxes.back();
            if (at % every != 0)
                return;
            Point& point = points[static_cast<std::size_t>(at / every)];
            if (const std::string text = storm->text(); text != point.text)
                FAIL() << "another text at " << at << differenceOf(point.text, text);
            ASSERT_EQ(storm->check(), "") << "at " << at;
            if (point.look.empty())
                point.look = lookOf(view);
            ASSERT_EQ(lookOf(view), point.look) << "at " << at;
        };
        const auto stride = [&] { return (storm->below(4) + 1) * every; };
        while (at > 0 && !HasFatalFailure()) {
            go(std::max(0, at - stride()));
            if (storm->below(4) == 0 && !HasFatalFailure())
                go(std::min(commands, at + stride() / 2 / every * every));
        }
        while (at < commands && !HasFatalFailure())
            go(std::min(commands, at + stride()));
        while (at > 0 && !HasFatalFailure())
            go(at - std::min(at, every));
        if (HasFatalFailure())
            return;
        go(commands);
        pass();
        EXPECT_EQ(edited.boxes.size(), refused) << edited.boxes.back(); // none in undo and redo
        std::printf("%d commands of %d tries, %zu points, %zu bytes of text at the end\n", commands,
                    storm->tries(), points.size(), points.back().text.size());
        view.setContainer(nullptr);
        view.setSceneGraph(nullptr);
    }
    top = nullptr;
    pass();
    EXPECT_EQ(storm->live().count(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Worlds, TreeEditStorm,
                         ::testing::Values(World{"Kalmyr", false, false, 12},
                                           World{"Vrml97", true, false, 8},
                                           World{"KalmyrTops", false, true, 21},
                                           World{"Vrml97Tops", true, true, 5}),
                         [](const auto& info) { return info.param.name; });
