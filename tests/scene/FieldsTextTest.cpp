#include "FieldsSupport.h"
#include "NodesSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/core/SoEngine.h>
#include <kalmyr/engines/SoElapsedTime.h>
#include <kalmyr/fields/SoBufferObject.h>
#include <kalmyr/fields/SoMFInstanceParameter.h>
#include <kalmyr/fields/SoMFUniformShaderParameter.h>
#include <kalmyr/fields/SoSFArray.h>
#include <kalmyr/fields/SoSFBufferObject.h>
#include <kalmyr/fields/SoSFEngine.h>
#include <kalmyr/fields/SoSFFieldContainer.h>
#include <kalmyr/fields/SoSFPath.h>
#include <kalmyr/fields/SoSFTrigger.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoSphere.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <random>

using fieldtest::Listener;
using fieldtest::textOf;

namespace {

class FieldText : public nodetest::NodesTest {
protected:
    void SetUp() override
    {
        NodesTest::SetUp();
        fieldtest::initTypes();
    }
};

std::unique_ptr<SoField> makeField(SoType type)
{
    return std::unique_ptr<SoField>(static_cast<SoField*>(type.createInstance()));
}

// ---- random values of every type

class Dice {
public:
    explicit Dice(unsigned seed) : m_random(seed) {}
    int below(int n) { return static_cast<int>(m_random() % static_cast<unsigned>(n)); }
    /// Any bits, and now and then the special ones.
    template <class T>
    T number()
    {
        if constexpr (std::is_floating_point_v<T>) {
            constexpr T kSpecial[] = {T(0),
                                      -T(0),
                                      std::numeric_limits<T>::infinity(),
                                      -std::numeric_limits<T>::infinity(),
                                      std::numeric_limits<T>::quiet_NaN(),
                                      std::numeric_limits<T>::denorm_min()};
            if (below(4) == 0)
                return kSpecial[below(6)];
            return static_cast<T>(
                std::ldexp(static_cast<double>(m_random()) - 1e9, below(90) - 60));
        } else {
            return static_cast<T>(m_random());
        }
    }
    SbString text()
    {
        std::string bytes;
        for (int left = below(40); left > 0; --left)
            bytes += static_cast<char>(below(256));
        return SbString(bytes);
    }

private:
    std::mt19937 m_random;
};

void roll(Dice& dice, bool& v)
{
    v = dice.below(2);
}
void roll(Dice& dice, std::int32_t& v)
{
    v = dice.number<std::int32_t>();
}
void roll(Dice& dice, std::uint32_t& v)
{
    v = dice.number<std::uint32_t>();
}
void roll(Dice& dice, std::int16_t& v)
{
    v = dice.number<std::int16_t>();
}
void roll(Dice& dice, std::uint16_t& v)
{
    v = dice.number<std::uint16_t>();
}
void roll(Dice& dice, float& v)
{
    v = dice.number<float>();
}
void roll(Dice& dice, double& v)
{
    v = dice.number<double>();
}
void roll(Dice& dice, SbTime& v)
{
    v = SbTime(dice.number<double>());
}
void roll(Dice& dice, SbString& v)
{
    v = dice.text();
}
void roll(Dice& dice, SbName& v)
{
    v = SbName(dice.text());
}
template <class T, int N>
void roll(Dice& dice, SbVec<T, N>& v)
{
    for (int i = 0; i < N; ++i)
        roll(dice, v[i]);
}
template <class T, int N>
void roll(Dice& dice, SbBox<T, N>& v)
{
    SbVec<T, N> min, max;
    roll(dice, min);
    roll(dice, max);
    v.setBounds(min, max);
}
void roll(Dice& dice, SbRotation& v)
{
    v = SbRotation(SbVec3f(1, static_cast<float>(dice.below(9)), 2),
                   static_cast<float>(dice.below(300)) / 100 + 0.1f);
}
void roll(Dice& dice, SbMatrix& v)
{
    for (int i = 0; i < 16; ++i)
        roll(dice, v[i / 4][i % 4]);
}
void roll(Dice& dice, SbPlane& v)
{
    v = SbPlane(SbVec3f(1, static_cast<float>(dice.below(9)), 2),
                static_cast<float>(dice.below(99)));
}
void roll(Dice& dice, SbImage& v)
{
    const SbVec3i32 size(dice.below(4) + 1, dice.below(3) + 1, dice.below(3));
    const int components = dice.below(4) + 1;
    std::vector<unsigned char> bytes(
        static_cast<std::size_t>(size[0] * size[1] * std::max(size[2], 1) * components));
    for (unsigned char& byte : bytes)
        byte = static_cast<unsigned char>(dice.below(256));
    ASSERT_TRUE(v.setValue(size, components, bytes.data()));
    if (dice.below(5) == 0)
        v.makeNull();
}

constexpr SoEnumEntry kNames[] = {{"READ", 1}, {"WRITE", 2}, {"_both", 3}, {"TOP", 1 << 30}};

/// A graph in which a named node stands twice.
SoRef<SoNode> sharedGraph(Dice& dice)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* material = new SoMaterial;
    material->setName("Shared");
    material->shininess = static_cast<float>(dice.below(100)) / 128;
    material->shininess.setIgnored(dice.below(2));
    auto* inner = new SoSeparator;
    root->addChild(material);
    root->addChild(inner);
    inner->addChild(material);
    inner->addChild(new SoCube);
    return root;
}

SoRef<SoNode> anyNode(Dice& dice)
{
    switch (dice.below(4)) {
    case 0:
        return nullptr;
    case 1:
        return new SoSphere;
    default:
        return sharedGraph(dice);
    }
}

SoRef<SoPath> anyPath(Dice& dice)
{
    const SoRef<SoNode> head = anyNode(dice);
    const SoRef<SoPath> path(dice.below(4) ? new SoPath(head.get()) : nullptr);
    if (path && head && head->getChildren()) {
        path->append(1);
        path->append(dice.below(2));
    }
    return path;
}

SoRef<SoEngine> anyEngine(Dice& dice)
{
    if (dice.below(3) == 0)
        return nullptr;
    const SoRef<SoElapsedTime> engine(new SoElapsedTime);
    engine->speed = static_cast<float>(dice.below(100)) / 8;
    if (dice.below(2))
        engine->setName("Clock");
    return engine;
}

using Fill = std::function<void(Dice&, SoField&)>;
using Fillers = std::map<SoType, Fill>;

template <class... Field>
void addSingle(Fillers& fillers)
{
    (fillers.emplace(Field::getClassTypeId(),
                     [](Dice& dice, SoField& field) {
                         typename Field::Value value{};
                         roll(dice, value);
                         static_cast<Field&>(field).setValue(value);
                     }),
     ...);
}

template <class... Field>
void addMultiple(Fillers& fillers)
{
    (fillers.emplace(Field::getClassTypeId(),
                     [](Dice& dice, SoField& field) {
                         auto& list = static_cast<Field&>(field);
                         list.setNum(dice.below(30));
                         for (int i = 0; i < list.getNum(); ++i) {
                             typename Field::Value value{};
                             roll(dice, value);
                             list.set1Value(i, value);
                         }
                     }),
     ...);
}

template <class... Field>
void addNodeLists(Fillers& fillers)
{
    (fillers.emplace(Field::getClassTypeId(),
                     [](Dice& dice, SoField& field) {
                         auto& list = static_cast<Field&>(field);
                         list.removeAllNodes();
                         SoRef<SoNode> node;
                         for (int left = dice.below(6); left > 0; --left) {
                             if (!node || dice.below(2)) // else once more the same
                                 node = anyNode(dice);
                             list.addNode(node.get());
                         }
                     }),
     ...);
}

template <class Field, class Make>
void addReferences(Fillers& fillers, Make make)
{
    fillers.emplace(Field::getClassTypeId(), [make](Dice& dice, SoField& field) {
        auto& list = static_cast<Field&>(field);
        list.setNum(0);
        for (int i = 0, num = dice.below(5); i < num; ++i)
            list.set1Value(i, make(dice).get());
    });
}

template <class Field, class Make>
void addReference(Fillers& fillers, Make make)
{
    fillers.emplace(Field::getClassTypeId(), [make](Dice& dice, SoField& field) {
        static_cast<Field&>(field).setValue(make(dice).get());
    });
}

Fillers allFillers()
{
    Fillers all;
    addSingle<SoSFBool, SoSFInt32, SoSFUInt32, SoSFShort, SoSFUShort, SoSFFloat, SoSFDouble,
              SoSFTime, SoSFString, SoSFName, SoSFVec2f, SoSFVec3f, SoSFVec4f, SoSFVec2d, SoSFVec3d,
              SoSFVec4d, SoSFVec2s, SoSFVec3s, SoSFVec4s, SoSFVec2i32, SoSFVec3i32, SoSFVec4i32,
              SoSFColor, SoSFColorRGBA, SoSFRotation, SoSFMatrix, SoSFPlane, SoSFBox2f, SoSFBox2s,
              SoSFBox3f, SoSFBox3s, SoSFImage, SoSFEnum, SoSFBitMask>(all);
    addMultiple<SoMFBool, SoMFInt32, SoMFUInt32, SoMFShort, SoMFUShort, SoMFFloat, SoMFDouble,
                SoMFTime, SoMFString, SoMFName, SoMFVec2f, SoMFVec3f, SoMFVec4f, SoMFVec2d,
                SoMFVec3d, SoMFVec4d, SoMFVec2s, SoMFVec3s, SoMFVec4s, SoMFVec2i32, SoMFVec3i32,
                SoMFVec4i32, SoMFColor, SoMFColorRGBA, SoMFRotation, SoMFMatrix, SoMFPlane,
                SoMFEnum>(all);
    addNodeLists<SoMFNode, SoMFUniformShaderParameter, SoMFInstanceParameter>(all);
    addReference<SoSFNode>(all, anyNode);
    addReference<SoSFFieldContainer>(all, anyNode);
    addReference<SoSFPath>(all, anyPath);
    addReferences<SoMFPath>(all, anyPath);
    addReference<SoSFEngine>(all, anyEngine);
    addReferences<SoMFEngine>(all, anyEngine);
    all.emplace(SoSFTrigger::getClassTypeId(), [](Dice&, SoField&) {});
    all.emplace(SoSFArray::getClassTypeId(), [](Dice& dice, SoField& field) {
        const auto type = static_cast<SoSFArray::DataType>(dice.below(SoSFArray::DOUBLE + 1));
        const SbVec3i32 size(dice.below(4), dice.below(4), dice.below(4));
        auto& array = static_cast<SoSFArray&>(field);
        ASSERT_TRUE(array.setValue(size, type));
        auto* bytes = static_cast<unsigned char*>(array.startEditing());
        for (std::size_t i = 0; i < array.getByteCount(); ++i) // no bits of a not-a-number
            bytes[i] = static_cast<unsigned char>(dice.below(127));
        array.finishEditing();
    });
    all.emplace(SoSFBufferObject::getClassTypeId(), [](Dice& dice, SoField& field) {
        const SoRef<SoBufferObject> buffer(new SoBufferObject);
        std::vector<std::byte> bytes(static_cast<std::size_t>(dice.below(20)));
        for (std::byte& byte : bytes)
            byte = static_cast<std::byte>(dice.below(256));
        buffer->adopt(std::move(bytes));
        static_cast<SoSFBufferObject&>(field).setValue(dice.below(4) ? buffer.get() : nullptr);
    });
    return all;
}

void nameValues(SoField& field)
{
    if (field.isOfType(SoSFEnum::getClassTypeId()))
        static_cast<SoSFEnum&>(field).setEnums(kNames);
    if (field.isOfType(SoSFBitMask::getClassTypeId()))
        static_cast<SoSFBitMask&>(field).setEnums(kNames);
    if (field.isOfType(SoMFEnum::getClassTypeId()))
        static_cast<SoMFEnum&>(field).setEnums(kNames);
}

/// Nodes, paths and engines are made anew: theirs are compared by their text.
bool holdsObjects(const SoField& field)
{
    const SoType types[] = {SoSFNode::getClassTypeId(),          SoMNodeField::getClassTypeId(),
                            SoSFPath::getClassTypeId(),          SoMFPath::getClassTypeId(),
                            SoSFEngine::getClassTypeId(),        SoMFEngine::getClassTypeId(),
                            SoSFFieldContainer::getClassTypeId()};
    for (const SoType type : types)
        if (field.isOfType(type))
            return true;
    return false;
}

SbString sbTextOf(const SoField& field)
{
    SbString text;
    field.get(text);
    return text;
}

} // namespace

TEST_F(FieldText, GivesBackRandomValuesOfEveryType)
{
    const Fillers fillers = allFillers();
    for (const SoType type : SoType::getAllDerivedFrom(SoField::getClassTypeId())) {
        if (!type.canCreateInstance())
            continue;
        SCOPED_TRACE(type.getName().getString());
        const auto fill = fillers.find(type);
        ASSERT_NE(fill, fillers.end()) << "a new type: give it random values";
        Dice dice(static_cast<unsigned>(type.getIndex()));
        for (int round = 0; round < 60; ++round) {
            const auto field = makeField(type), copy = makeField(type);
            if (dice.below(3)) {
                nameValues(*field);
                nameValues(*copy);
            }
            fill->second(dice, *field);
            const SbString text = sbTextOf(*field);
            ASSERT_TRUE(copy->set(text)) << text;
            EXPECT_EQ(sbTextOf(*copy), text);
            EXPECT_TRUE(field->isSame(*field)) << text;
            if (!holdsObjects(*field)) {
                EXPECT_TRUE(copy->isSame(*field)) << text;
            }
            if (!field->isOfType(SoMField::getClassTypeId()))
                continue;
            // Value by value as well.
            const auto& list = static_cast<const SoMField&>(*field);
            auto& built = static_cast<SoMField&>(*copy);
            built.setNum(0);
            SbString one;
            for (int i = 0; i < list.getNum(); ++i) {
                list.get1(i, one);
                ASSERT_TRUE(built.set1(i, one)) << one;
            }
            ASSERT_EQ(built.getNum(), list.getNum());
            if (!holdsObjects(list)) { // value by value, nothing is shared
                EXPECT_TRUE(built.isSame(list)) << text;
            }
        }
    }
}

TEST_F(FieldText, HasNodesWithWhatTheyShareAndFollow)
{
    SoSFNode field, copy;
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* material = new SoMaterial;
    material->setName("Shared");
    material->shininess = 0.25f;
    material->shininess.setIgnored(true);
    auto* cube = new SoCube;
    auto* sphere = new SoSphere;
    for (SoNode* child : {static_cast<SoNode*>(material), static_cast<SoNode*>(cube),
                          static_cast<SoNode*>(material), static_cast<SoNode*>(sphere)})
        root->addChild(child);
    cube->width.connectFrom(&sphere->radius);
    sphere->radius = 3;
    field = root.get();
    ASSERT_TRUE(copy.set(sbTextOf(field))) << textOf(field);
    const auto* made = static_cast<SoSeparator*>(copy.getValue());
    ASSERT_EQ(made->getNumChildren(), 4);
    EXPECT_NE(made, root.get());
    EXPECT_EQ(made->getChild(0), made->getChild(2));
    const auto* madeMaterial = static_cast<SoMaterial*>(made->getChild(0));
    EXPECT_EQ(madeMaterial->getName(), "Shared");
    EXPECT_TRUE(madeMaterial->shininess.isIgnored());
    EXPECT_EQ(madeMaterial->shininess[0], 0.25f);
    auto* madeSphere = static_cast<SoSphere*>(made->getChild(3));
    const auto* madeCube = static_cast<SoCube*>(made->getChild(1));
    EXPECT_EQ(madeCube->width.getConnectedField(), &madeSphere->radius);
    madeSphere->radius = 5;
    EXPECT_EQ(madeCube->width.getValue(), 5);

    SoMFEngine engines, engineCopies;
    const SoRef<SoElapsedTime> clock(new SoElapsedTime);
    clock->speed = 2;
    for (SoEngine* engine : {static_cast<SoEngine*>(clock.get()), static_cast<SoEngine*>(nullptr),
                             static_cast<SoEngine*>(clock.get())})
        engines.addEngine(engine);
    ASSERT_TRUE(engineCopies.set(sbTextOf(engines))) << textOf(engines);
    ASSERT_EQ(engineCopies.getNum(), 3);
    EXPECT_EQ(engineCopies[0], engineCopies[2]);
    EXPECT_EQ(static_cast<SoElapsedTime*>(engineCopies[0])->speed.getValue(), 2);
}

TEST_F(FieldText, HasPathsThroughChildrenAndFields)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* holder = new fieldtest::Holder;
    root->addChild(new SoCube);
    root->addChild(holder);
    holder->parts.addNode(new SoCube);
    auto* group = new SoGroup;
    holder->parts.addNode(group);
    group->addChild(new SoSphere);
    const SoRef<SoPath> path(new SoPath(root.get()));
    path->append(1);
    path->append(group, -1);
    path->append(0);
    SoMFPath field, copy;
    field.addPath(path.get());
    field.addPath(nullptr);
    ASSERT_TRUE(copy.set(sbTextOf(field))) << textOf(field);
    ASSERT_EQ(copy.getNum(), 2);
    ASSERT_EQ(copy[0]->getLength(), 4);
    EXPECT_NE(copy[0]->getHead(), root.get());
    EXPECT_EQ(copy[0]->getIndex(1), 1);
    EXPECT_EQ(copy[0]->getIndex(2), -1);
    EXPECT_EQ(copy[0]->getTail()->getTypeId(), SoSphere::getClassTypeId());
    EXPECT_EQ(copy[1], nullptr);
}

TEST_F(FieldText, OfContainersSharesNodesAmongFields)
{
    const SoRef<fieldtest::Holder> holder(new fieldtest::Holder), copy(new fieldtest::Holder);
    auto* cube = new SoCube;
    cube->depth = 7;
    holder->part = cube;
    holder->parts.setValues(std::vector<SoNode*>{cube, nullptr, cube});
    holder->size.setIgnored(true); // with its default value
    SbString text, again;
    holder->get(text);
    ASSERT_TRUE(copy->set(text)) << text;
    copy->get(again);
    EXPECT_EQ(again, text);
    EXPECT_TRUE(copy->size.isIgnored());
    EXPECT_EQ(copy->parts[0], copy->part.getValue());
    EXPECT_EQ(copy->parts[2], copy->part.getValue());
    EXPECT_EQ(copy->parts[1], nullptr);
    EXPECT_NE(copy->part.getValue(), cube);
    EXPECT_EQ(static_cast<SoCube*>(copy->part.getValue())->depth.getValue(), 7);
    EXPECT_TRUE(copy->set(""));
}

/// A fault anywhere leaves values, flags and listeners alone.
TEST_F(FieldText, IsTakenAsAWholeOrNotAtAll)
{
    const SoRef<fieldtest::Holder> holder(new fieldtest::Holder);
    holder->part = new SoCube;
    const auto stateOf = [&holder] {
        SbString text;
        holder->get(text);
        std::string state = text.toStdString();
        for (const SoField* field : holder->getFields())
            state += field->isDefault() ? 'd' : field->isIgnored() ? 'i' : '.';
        return state;
    };
    const std::string before = stateOf();
    const SoNode* part = holder->part.getValue();
    Listener listener;
    holder->addAuditor(&listener, SoAuditor::SENSOR);
    const char* const faulty[] = {
        "size 2 part",
        "size 2 ~ part Sphere { radius 3",
        "size 2 parts [ Cube { } Cube { ]",
        "part Sphere { } size two",
        "part DEF it Sphere { } parts [ USE it, USE that ]",
        "size 2 colour 3",
        "size 2 ~ ~",
        "parts [ Cube { } ] part Nonsense",
        "part Sphere { } ROUTE a.b",
        "size 2 }",
        "7",
    };
    for (const char* text : faulty) {
        auto errors = support::expectErrors();
        EXPECT_FALSE(holder->set(text)) << text;
        EXPECT_EQ(stateOf(), before) << text;
        EXPECT_EQ(holder->part.getValue(), part) << text;
    }
    EXPECT_EQ(listener.changes, 0);
    // The same for single fields, and single values of them.
    holder->parts.setValues(std::vector<SoNode*>{holder->part.getValue(), nullptr});
    listener.take();
    for (const char* text : {"Cube { } Cube { }", "Cube {", "USE part", "Path", "half", ""}) {
        auto errors = support::expectErrors();
        EXPECT_FALSE(holder->part.set(text)) << text;
        EXPECT_FALSE(holder->parts.set1(1, text)) << text;
        EXPECT_FALSE(holder->size.set(text)) << text;
        EXPECT_EQ(errors.count(), 3u) << text;
    }
    EXPECT_EQ(listener.changes, 0);
    EXPECT_EQ(holder->part.getValue(), part);
    EXPECT_EQ(holder->parts[1], nullptr);
    holder->removeAuditor(&listener);
}

/// Kits take certain nodes only; text is no way round that.
TEST_F(FieldText, BringsNoNodeThatTheFieldDoesNotTake)
{
    const SoRef<SoNode> kit(SoNode::create(SoType::fromName("ShapeKit")));
    ASSERT_TRUE(kit);
    SoField* appearance = kit->getField("appearance");
    ASSERT_NE(appearance, nullptr);
    const std::string before = textOf(*appearance);
    auto errors = support::expectErrors();
    EXPECT_FALSE(appearance->set("Cube { }"));
    EXPECT_EQ(textOf(*appearance), before);
}
