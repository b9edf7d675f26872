#include "FieldsSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/core/SoPath.h>
#include <kalmyr/fields/SoMFUniformShaderParameter.h>
#include <kalmyr/fields/SoSFFieldContainer.h>
#include <kalmyr/fields/SoSFPath.h>

#include <memory>
#include <vector>

#include <gtest/gtest.h>

using fieldtest::Bound;
using fieldtest::Holder;
using fieldtest::Listener;
using fieldtest::textOf;

namespace {

/// Reads nodes as a scene file reader does: every word but NULL is a new Holder of that name.
class NodeReader final : public SoFieldReader {
public:
    using SoFieldReader::SoFieldReader;
    bool readNode(SoNode*& node) override
    {
        node = nullptr;
        std::string_view word;
        if (!text.readWord(word)) {
            return text.fail("expected a node");
        }
        if (word != "NULL") {
            node = new Holder;
            node->setName(SbName(word));
        }
        return true;
    }
};

bool readFrom(const std::string& text, SoField& field)
{
    SoTokenizer tokens(text.data(), text.size());
    NodeReader reader(tokens);
    return field.readValue(reader) && tokens.atEnd();
}

class NodeFields : public testing::Test {
protected:
    static void SetUpTestSuite() { fieldtest::initTypes(); }
    void SetUp() override { m_holder = new Holder; }

    SoRef<Holder> m_holder;
};

/// As a writer has it that knows nodes by their names only.
std::string namesIn(const SoField& field)
{
    std::string text;
    SoFieldWriter writer(text);
    field.writeValue(writer);
    return text;
}

} // namespace

TEST_F(NodeFields, KeepTheirNodesAlive)
{
    SoRef<Holder> node(new Holder);
    Listener death;
    node->addAuditor(&death, SoAuditor::SENSOR);
    m_holder->part = node.get();
    m_holder->parts.addNode(node.get());
    m_holder->parts.addNode(node.get());
    EXPECT_EQ(node->getRefCount(), 4);
    Holder* const bare = node.get();
    node = nullptr;
    EXPECT_FALSE(death.died);
    m_holder->parts.removeNode(bare);
    EXPECT_EQ(bare->getRefCount(), 2);
    m_holder->part = nullptr;
    EXPECT_FALSE(death.died);
    m_holder->parts.setNum(0);
    EXPECT_TRUE(death.died);
}

TEST_F(NodeFields, LetGoWhenTheyDieThemselves)
{
    const SoRef<Holder> node(new Holder);
    m_holder->part = node.get();
    m_holder->parts.setValue(node.get());
    {
        SoSFFieldContainer loose;
        loose.setValue(node.get());
        EXPECT_EQ(node->getRefCount(), 4);
    }
    m_holder = nullptr;
    EXPECT_EQ(node->getRefCount(), 1);
    EXPECT_EQ(node->getAuditors().getLength(), 0);
}

TEST_F(NodeFields, PassChangesBelowToTheirContainer)
{
    const SoRef<Holder> node(new Holder);
    m_holder->part = node.get();
    m_holder->parts.addNode(node.get());
    Listener top, field;
    m_holder->addAuditor(&top, SoAuditor::SENSOR);
    m_holder->part.addAuditor(&field, SoAuditor::SENSOR);
    const auto before = m_holder->getNodeId();
    node->size = 3;
    EXPECT_EQ(top.take(), 1) << "reached by two fields, told once";
    EXPECT_EQ(field.take(), 1);
    EXPECT_EQ(top.field, &node->size);
    EXPECT_GT(m_holder->getNodeId(), before);
    m_holder->part = nullptr;
    EXPECT_EQ(top.take(), 1);
    EXPECT_EQ(top.field, &m_holder->part);
    m_holder->parts.removeAllNodes();
    EXPECT_EQ(top.take(), 1);
    node->size = 4;
    EXPECT_EQ(top.take(), 0);
    m_holder->removeAuditor(&top);
    m_holder->part.removeAuditor(&field);
}

TEST_F(NodeFields, RefuseWhatHoldsTheirContainer)
{
    const SoRef<Holder> top(new Holder);
    const SoRef<Bound> middle(new Bound);
    const SoRef<Holder> good(new Holder);
    top->setName("top");
    m_holder->setName("bottom");
    top->part = middle.get();
    middle->children.addNode(m_holder.get());
    for (SoNode* node : {static_cast<SoNode*>(top.get()), static_cast<SoNode*>(middle.get()),
                         static_cast<SoNode*>(m_holder.get())}) {
        const auto errors = support::expectErrors();
        m_holder->part = node;
        EXPECT_FALSE(m_holder->parts.addNode(node));
        EXPECT_FALSE(m_holder->parts.setValues(std::vector<SoNode*>{good.get(), node}));
        EXPECT_EQ(errors.count(), 3u);
        EXPECT_TRUE(errors.contains("bottom"));
    }
    EXPECT_EQ(m_holder->part.getValue(), nullptr);
    EXPECT_EQ(m_holder->parts.getNum(), 0);
    EXPECT_EQ(good->getRefCount(), 1) << "a refused list holds none of its nodes";
    EXPECT_EQ(m_holder->getRefCount(), 2);
}

TEST_F(NodeFields, EditListsWithOneNotificationEach)
{
    std::vector<SoRef<Holder>> nodes;
    std::vector<SoNode*> plain;
    for (int i = 0; i < 5; ++i) {
        nodes.emplace_back(new Holder);
        plain.push_back(nodes.back().get());
    }
    SoMFNode& parts = m_holder->parts;
    Listener listener;
    m_holder->addAuditor(&listener, SoAuditor::SENSOR);
    using Note = SoNotification;
    const auto step = [&](const char* name, std::vector<SoNode*> expected, Note::Kind kind,
                          SoNode* child = nullptr, int index = -1) {
        EXPECT_EQ(listener.take(), 1) << name;
        EXPECT_EQ(parts.getValues(), expected) << name;
        EXPECT_EQ(listener.field, &parts) << name;
        EXPECT_EQ(listener.kind, kind) << name;
        EXPECT_EQ(listener.child, child) << name;
        EXPECT_EQ(listener.index, index) << name;
    };
    SoNode *const a = plain[0], *const b = plain[1], *const c = plain[2], *const d = plain[3],
                  *const e = plain[4];
    EXPECT_TRUE(parts.setValues(plain));
    step("setValues", plain, Note::UNSPECIFIED);
    EXPECT_FALSE(parts.isDefault());
    EXPECT_TRUE(parts.insertNode(nullptr, 1));
    step("insertNode", {a, nullptr, b, c, d, e}, Note::CHILD_INSERTED, nullptr, 1);
    EXPECT_TRUE(parts.replaceNode(c, a));
    step("replaceNode", {a, nullptr, b, a, d, e}, Note::CHILD_REPLACED, a, 3);
    EXPECT_EQ(parts.find(a), 0);
    parts.deleteValues(1, 2);
    step("deleteValues", {a, a, d, e}, Note::UNSPECIFIED);
    parts.insertSpace(2, 1);
    step("insertSpace", {a, a, nullptr, d, e}, Note::CHILD_INSERTED, nullptr, 2);
    EXPECT_TRUE(parts.setValues(4, plain));
    step("setValues from 4", {a, a, nullptr, d, a, b, c, d, e}, Note::UNSPECIFIED);
    EXPECT_TRUE(parts.removeNode(8));
    step("removeNode", {a, a, nullptr, d, a, b, c, d}, Note::CHILD_REMOVED, e, 8);
    EXPECT_TRUE(parts.set1Value(8, e));
    step("set1Value at the end", {a, a, nullptr, d, a, b, c, d, e}, Note::CHILD_ADDED, e, 8);
    parts.setNum(2);
    step("setNum", {a, a}, Note::UNSPECIFIED);
    EXPECT_TRUE(parts.set1Value(4, e));
    step("set1Value beyond", {a, a, nullptr, nullptr, e}, Note::UNSPECIFIED);
    SoMFNode source;
    source.setValues(plain);
    EXPECT_TRUE(parts.replaceValues(1, 3, source, 3, 1));
    step("replaceValues", {a, d, e}, Note::UNSPECIFIED);
    EXPECT_TRUE(parts.replaceValues(2, 0, source, 1, 1));
    step("replaceValues of none", {a, d, b, e}, Note::CHILD_INSERTED, b, 2);
    source.setNum(0);
    EXPECT_TRUE(parts.removeAllNodes());
    step("removeAllNodes", {}, Note::ALL_REMOVED);
    EXPECT_TRUE(parts.setValue(b));
    step("setValue", {b}, Note::CHILD_ADDED, b, 0);
    EXPECT_EQ(nodes[1]->getRefCount(), 2);
    EXPECT_EQ(nodes[0]->getRefCount(), 1);
    parts.enableNotify(false);
    EXPECT_TRUE(parts.addNode(c));
    parts.enableNotify(true);
    EXPECT_TRUE(parts.removeNode(1));
    step("removal after a silent addition", {b}, Note::CHILD_REMOVED, c, 1);
    {
        const auto errors = support::expectErrors();
        EXPECT_FALSE(parts.removeNode(plain[0]));
        EXPECT_FALSE(parts.insertNode(plain[0], 2));
        EXPECT_FALSE(parts.replaceNode(-1, plain[0]));
    }
    EXPECT_EQ(listener.take(), 0);
    m_holder->removeAuditor(&listener);
}

TEST_F(NodeFields, CopyDeepWithSharedNodesStayingShared)
{
    const SoRef<Holder> node(new Holder);
    m_holder->part = node.get();
    m_holder->parts.setValues(std::vector<SoNode*>{node.get(), nullptr, node.get()});
    const SoRef<Bound> top(new Bound);
    top->children.addNode(m_holder.get());
    const SoRef<SoNode> copy(top->copy());
    const auto* below = static_cast<const Bound*>(copy.get());
    ASSERT_EQ(below->children.getNum(), 1);
    const auto* holder = static_cast<const Holder*>(below->children[0]);
    EXPECT_NE(holder, m_holder.get());
    ASSERT_EQ(holder->parts.getNum(), 3);
    EXPECT_NE(holder->part.getValue(), node.get());
    EXPECT_EQ(holder->parts[0], holder->part.getValue());
    EXPECT_EQ(holder->parts[1], nullptr);
    EXPECT_EQ(holder->parts[2], holder->part.getValue());
}

TEST_F(NodeFields, ReadWhatTheReaderMakes)
{
    ASSERT_TRUE(readFrom("a", m_holder->part));
    EXPECT_EQ(namesIn(m_holder->part), "a");
    ASSERT_TRUE(readFrom("NULL", m_holder->part));
    EXPECT_EQ(namesIn(m_holder->part), "NULL");
    ASSERT_TRUE(readFrom("[ a, NULL b ]", m_holder->parts));
    EXPECT_EQ(namesIn(m_holder->parts), "[ a, NULL, b ]");
    EXPECT_EQ(m_holder->parts[2]->getRefCount(), 1);
    ASSERT_TRUE(readFrom("c", m_holder->parts));
    EXPECT_EQ(m_holder->parts.getNum(), 1);
    EXPECT_FALSE(readFrom("[ a, { ]", m_holder->parts));
    EXPECT_EQ(namesIn(m_holder->parts), "c") << "nodes stay when the list is faulty";
    ASSERT_TRUE(readFrom("[ ]", m_holder->parts));
    EXPECT_EQ(m_holder->parts.getNum(), 0);
}

TEST_F(NodeFields, BoundFieldAndChildListAreOne)
{
    const SoRef<Bound> group(new Bound);
    const SoRef<Holder> a(new Holder), b(new Holder);
    Listener node, field;
    group->addAuditor(&node, SoAuditor::SENSOR);
    group->children.addAuditor(&field, SoAuditor::SENSOR);
    EXPECT_TRUE(group->children.isDefault());

    group->getChildren()->append(a.get());
    EXPECT_EQ(group->children[0], a.get());
    EXPECT_FALSE(group->children.isDefault());
    EXPECT_EQ(node.take(), 1);
    EXPECT_EQ(field.take(), 1) << "listeners of the field hear of edits of the list";
    EXPECT_EQ(field.kind, SoNotification::CHILD_ADDED);

    EXPECT_TRUE(group->children.insertNode(b.get(), 0));
    EXPECT_EQ((*group->getChildren())[0], b.get());
    EXPECT_EQ(node.take(), 1);
    EXPECT_EQ(node.kind, SoNotification::CHILD_INSERTED);
    EXPECT_EQ(node.child, b.get());
    EXPECT_EQ(node.index, 0);

    EXPECT_TRUE(group->children.set1Value(1, b.get()));
    EXPECT_EQ(node.kind, SoNotification::CHILD_REPLACED);
    group->children.deleteValues(1, 1);
    EXPECT_EQ(node.kind, SoNotification::CHILD_REMOVED);
    node.take();
    EXPECT_TRUE(group->children.setValues(std::vector<SoNode*>{a.get(), nullptr, b.get()}));
    EXPECT_EQ(node.take(), 1);
    EXPECT_EQ(group->getChildren()->getLength(), 2) << "a group has no null children";
    EXPECT_EQ(a->getRefCount(), 2);

    node.take();
    field.take();
    a->size = 5;
    EXPECT_EQ(node.take(), 1);
    EXPECT_EQ(field.take(), 1);
    group->children.removeAllNodes();
    EXPECT_EQ(node.kind, SoNotification::ALL_REMOVED);
    const auto errors = support::expectErrors();
    EXPECT_FALSE(group->children.addNode(nullptr));
    EXPECT_FALSE(group->children.addNode(group.get()));
    group->removeAuditor(&node);
    group->children.removeAuditor(&field);
}

TEST_F(NodeFields, PathsGoThroughTextByIndices)
{
    const SoRef<Bound> top(new Bound);
    top->children.addNode(new Holder);
    top->children.addNode(m_holder.get());
    const SoRef<SoPath> path(new SoPath(top.get()));
    path->append(1);
    SoSFPath field;
    field.setValue(path.get());
    top->setName("top");
    EXPECT_EQ(namesIn(field), "Path { top [ 1 ] }");

    // A reader that knows one node only.
    class Reader final : public SoFieldReader {
    public:
        Reader(SoTokenizer& tokens, SoNode* known) : SoFieldReader(tokens), m_known(known) {}
        bool readNode(SoNode*& node) override
        {
            node = m_known;
            return text.acceptWord("top");
        }

    private:
        SoNode* m_known;
    };
    const auto read = [&top](const std::string& text, SoField& to) {
        SoTokenizer tokens(text.data(), text.size());
        Reader reader(tokens, top.get());
        return to.readValue(reader);
    };
    SoSFPath back;
    ASSERT_TRUE(read(namesIn(field), back));
    EXPECT_TRUE(back.isSame(field));
    EXPECT_FALSE(read("Path { top [ 2 ] }", back));
    EXPECT_FALSE(read("Path { top [ 1", back));
    EXPECT_TRUE(back.isSame(field));

    SoMFPath paths;
    ASSERT_TRUE(read("[ NULL, Path { top [ 1 ] }, Path { top [ ] } ]", paths));
    ASSERT_EQ(paths.getNum(), 3);
    EXPECT_EQ(paths.find(path.get()), 1);
    EXPECT_EQ(namesIn(paths), "[ NULL, Path { top [ 1 ] }, Path { top [ ] } ]");
    paths.deleteValues(0, 2);
    EXPECT_EQ(paths[0]->getLength(), 1);
}

TEST_F(NodeFields, ShaderParametersAreANodeListOfItsOwnType)
{
    SoMFUniformShaderParameter field;
    const SoRef<Holder> node(new Holder);
    EXPECT_TRUE(field.addShaderParameter(node.get()));
    EXPECT_TRUE(field.insertShaderParameter(node.get(), 0));
    EXPECT_EQ(node->getRefCount(), 3);
    EXPECT_TRUE(field.removeShaderParameter(node.get()));
    EXPECT_FALSE(field.isOfType(SoMFNode::getClassTypeId())) << "told apart by type";
    EXPECT_TRUE(field.isOfType(SoMNodeField::getClassTypeId()));
    EXPECT_EQ(field.getNum(), 1);
}
