#include "FieldsSupport.h"
#include "NodesSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/details/SoFaceDetail.h>
#include <kalmyr/elements/SoState.h>
#include <kalmyr/fields/SoDeclaredFields.h>
#include <kalmyr/fields/SoSFArray.h>
#include <kalmyr/fields/SoSFTrigger.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodekits/SoNodekitCatalog.h>
#include <kalmyr/nodekits/SoNodeKitListPart.h>
#include <kalmyr/nodekits/SoSeparatorKit.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/sensors/SoFieldSensor.h>
#include <kalmyr/sensors/SoNodeSensor.h>
#include <kalmyr/sensors/SoPathSensor.h>
#include <kalmyr/sensors/SoRoute.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoSphere.h>

#include <climits>
#include <functional>
#include <memory>

using fieldtest::Listener;
using fieldtest::textOf;

namespace {

/// What a caller must not do, and what has to be as before.
struct Misuse {
    const char* name;
    std::function<void()> provoke;
};

/// Each posts an error, and `state` stays.
void expectRefused(const std::vector<Misuse>& misuses, const std::function<std::string()>& state)
{
    for (const Misuse& misuse : misuses) {
        const std::string before = state();
        auto errors = support::expectErrors();
        misuse.provoke();
        EXPECT_GE(errors.count(), 1u) << misuse.name;
        EXPECT_EQ(state(), before) << misuse.name;
        errors.mayStayEmpty(); // said above, with the name
    }
}

std::unique_ptr<SoField> makeField(SoType type)
{
    return std::unique_ptr<SoField>(static_cast<SoField*>(type.createInstance()));
}

class Contracts : public nodetest::NodesTest {
protected:
    SoRef<SoGroup> group;
    SoRef<SoNode> stranger;

    void SetUp() override
    {
        NodesTest::SetUp();
        group = new SoGroup;
        stranger = new SoSphere;
        group->addChild(new SoCube);
        group->addChild(new SoMaterial);
    }
    void TearDown() override
    {
        group = nullptr;
        stranger = nullptr;
    }
    std::string children() const
    {
        std::string text;
        for (const SoNode* child : group->getChildren()->getNodes())
            text += std::string(child->getTypeId().getName().view()) + ' ';
        return text;
    }
};

} // namespace

/// All types of multiple values, those of modules and hosts among them.
TEST_F(Contracts, ListsOfValuesRefuseWhatIsOutOfRange)
{
    for (const SoType type : SoType::getAllDerivedFrom(SoMField::getClassTypeId())) {
        if (!type.canCreateInstance())
            continue;
        SCOPED_TRACE(type.getName().getString());
        const auto field = makeField(type);
        auto& list = static_cast<SoMField&>(*field);
        list.setNum(2);
        Listener listener;
        list.addAuditor(&listener, SoAuditor::SENSOR);
        list.setDefault(true);
        SbString text("stays");
        std::string out;
        SoFieldWriter writer(out);
        SoTokenizer tokens("1 ", 2);
        SoFieldReader reader(tokens);
        SoSFTrigger other;
        const std::unique_ptr<SoMField> source(
            static_cast<SoMField*>(list.getTypeId().createInstance()));
        expectRefused(
            {
                {"get1(-1)", [&] { list.get1(-1, text); }},
                {"get1(num)", [&] { list.get1(2, text); }},
                {"write1Value(-1)", [&] { list.write1Value(-1, writer); }},
                {"write1Value(num)", [&] { list.write1Value(2, writer); }},
                {"set1(-1)", [&] { EXPECT_FALSE(list.set1(-1, "1")); }},
                {"set1(null)",
                 [&] { EXPECT_FALSE(list.set1(0, static_cast<const char*>(nullptr))); }},
                {"set1(most)", [&] { EXPECT_FALSE(list.set1(INT_MAX, "NULL")); }},
                {"read1Value(-8)", [&] { EXPECT_FALSE(list.read1Value(-8, reader)); }},
                {"setNum(-1)", [&] { list.setNum(-1); }},
                {"setNum(most)", [&] { list.setNum(INT_MAX); }},
                {"deleteValues(-1)", [&] { list.deleteValues(-1, 1); }},
                {"deleteValues(3)", [&] { list.deleteValues(3); }},
                {"deleteValues(-1) to the end", [&] { list.deleteValues(-1, INT_MAX); }},
                {"insertSpace(-1)", [&] { list.insertSpace(-1, 1); }},
                {"insertSpace(less than none)", [&] { list.insertSpace(0, -1); }},
                {"insertSpace(most)", [&] { list.insertSpace(1, INT_MAX); }},
                {"insertSpace(most, most)", [&] { list.insertSpace(INT_MAX, INT_MAX); }},
                {"replaceValues(itself)",
                 [&] { EXPECT_FALSE(list.replaceValues(0, 1, list, 0, 1)); }},
                {"replaceValues(beyond)",
                 [&] { EXPECT_FALSE(list.replaceValues(1, 2, *source, 0, 0)); }},
                {"replaceValues(from beyond)",
                 [&] { EXPECT_FALSE(list.replaceValues(0, 0, *source, 0, INT_MAX)); }},
            },
            [&] { return textOf(list) + (list.isDefault() ? "default" : "") + out; });
        EXPECT_TRUE(text.isEmpty());
        EXPECT_EQ(listener.changes, 0);
        list.deleteValues(2); // at the end: nothing to delete, and no mistake
        EXPECT_EQ(list.getNum(), 2);
        list.removeAuditor(&listener);
    }
}

TEST_F(Contracts, FieldsRefuseOthersAndNull)
{
    SoSFTrigger trigger;
    SoSFFloat number;
    for (const SoType type : SoType::getAllDerivedFrom(SoField::getClassTypeId())) {
        if (!type.canCreateInstance())
            continue;
        SCOPED_TRACE(type.getName().getString());
        const auto field = makeField(type);
        SoField* other = type == trigger.getTypeId() ? static_cast<SoField*>(&number) : &trigger;
        Listener listener;
        field->addAuditor(&listener, SoAuditor::SENSOR);
        EXPECT_FALSE(field->isSame(*other));
        expectRefused(
            {
                {"copyFrom", [&] { field->copyFrom(*other); }},
                {"set(null)", [&] { EXPECT_FALSE(field->set(static_cast<const char*>(nullptr))); }},
                {"connectFrom(null)", [&] { EXPECT_FALSE(field->connectFrom(nullptr)); }},
                {"addAuditor(null)", [&] { field->addAuditor(nullptr, SoAuditor::SENSOR); }},
                {"getAuditors()[1]", [&] { EXPECT_EQ(field->getAuditors()[1].auditor, nullptr); }},
            },
            [&] { return textOf(*field) + (field->isDefault() ? "default" : ""); });
        EXPECT_EQ(listener.changes, 0);
        EXPECT_TRUE(field->isSame(*field));
        field->removeAuditor(&listener);
    }
}

TEST_F(Contracts, TypedValuesRefuseWhatIsOutOfRange)
{
    SoMFVec3f points;
    points.setValues({{1, 2, 3}, {4, 5, 6}});
    const SbVec3f more[2];
    const int notFound = group->findChild(stranger.get()); // -1, which the compiler cannot know
    EXPECT_EQ(points.getValues(2), points.getValues() + 2);
    expectRefused(
        {
            {"operator[](-1)", [&] { EXPECT_EQ(points[-1], SbVec3f()); }},
            {"operator[](num)", [&] { EXPECT_EQ(points[2], SbVec3f()); }},
            {"getValues(-1)", [&] { points.getValues(-1); }},
            {"set1Value(-8)", [&] { points.set1Value(-8, SbVec3f()); }},
            {"set1Value(most)", [&] { points.set1Value(INT_MAX, SbVec3f()); }},
            {"setValues(-1)", [&] { points.setValues(-1, 2, more); }},
            {"setValues(less than none)", [&] { points.setValues(0, -2, more); }},
            {"setValues(null)", [&] { points.setValues(0, 2, nullptr); }},
            {"setValues(most)", [&] { points.setValues(INT_MAX, 2, more); }},
            {"setNumQuietly(-1)", [&] { points.setNumQuietly(-1); }},
            {"setNumRaw(most)", [&] { EXPECT_EQ(points.setNumRaw(INT_MAX), nullptr); }},
            {"reserve(-1)", [&] { points.reserve(notFound); }},
        },
        [&] { return textOf(points); });

    SoSFArray array;
    const float values[] = {1, 2, 3, 4};
    ASSERT_TRUE(array.setValue({2, 2, 1}, SoSFArray::FLOAT, values));
    constexpr auto kNoType = static_cast<SoSFArray::DataType>(99);
    expectRefused(
        {
            {"getValueAt(num)", [&] { EXPECT_EQ(array.getValueAt(4), 0); }},
            {"getValueAt(-1)",
             [&] { EXPECT_EQ(array.getValueAt(static_cast<std::size_t>(-1)), 0); }},
            {"dimensions below 0",
             [&] {
                 EXPECT_FALSE(array.setValue({-1, 2, 2}, SoSFArray::FLOAT));
             }},
            {"bytes overflow",
             [&] {
                 EXPECT_FALSE(array.setValue({INT_MAX, INT_MAX, INT_MAX}, SoSFArray::DOUBLE));
             }},
            {"no type",
             [&] {
                 EXPECT_FALSE(array.setValue({1, 1, 1}, kNoType));
             }},
            {"size of no type", [&] { SoSFArray::getSizeOf(kNoType); }},
        },
        [&] { return textOf(array); });

    SoSFImage image;
    const unsigned char pixels[4] = {1, 2, 3, 4};
    ASSERT_TRUE(image.setValue({2, 2}, 1, pixels));
    expectRefused(
        {
            {"size below 0",
             [&] {
                 EXPECT_FALSE(image.setValue({-2, 2}, 1, pixels));
             }},
            {"five components",
             [&] {
                 EXPECT_FALSE(image.setValue({1, 1}, 5, pixels));
             }},
            {"bytes overflow",
             [&] {
                 EXPECT_FALSE(image.setValue({INT_MAX, INT_MAX}, 4, nullptr));
             }},
        },
        [&] { return textOf(image); });

    constexpr SoEnumEntry kNames[] = {{"ONE", 1}, {"TWO", 2}};
    SoSFEnum single;
    SoMFEnum several;
    single.setEnums(kNames);
    several.setEnums(kNames);
    SbName name("stays");
    expectRefused(
        {
            {"getEnum(-1)", [&] { EXPECT_EQ(single.getEnum(-1, name), 0); }},
            {"getEnum(num)", [&] { EXPECT_EQ(several.getEnum(2, name), 0); }},
            {"too many names",
             [&] { single.setEnums(std::vector<SoEnumEntry>(std::size_t(1) << 16)); }},
        },
        [&] { return textOf(single) + std::to_string(single.getNumEnums()); });
    EXPECT_TRUE(name.isEmpty());
}

TEST_F(Contracts, NodeListsRefuseWhatIsOutOfRange)
{
    fieldtest::initTypes();
    const SoRef<fieldtest::Bound> bound(new fieldtest::Bound);
    bound->children.addNode(new SoCube);
    SoMFNode loose;
    loose.addNode(new SoCube);
    loose.addNode(nullptr);
    for (SoMFNode* nodes : {&bound->children, &loose}) {
        SCOPED_TRACE(nodes->isBound() ? "bound" : "loose");
        const int num = nodes->getNum();
        SoNode* const two[2] = {stranger.get(), stranger.get()};
        expectRefused(
            {
                {"operator[](-1)", [&] { EXPECT_EQ((*nodes)[-1], nullptr); }},
                {"getNode(num)", [&] { EXPECT_EQ(nodes->getNode(num), nullptr); }},
                {"insertNode(-1)", [&] { EXPECT_FALSE(nodes->insertNode(stranger.get(), -1)); }},
                {"insertNode(num + 1)",
                 [&] { EXPECT_FALSE(nodes->insertNode(stranger.get(), num + 1)); }},
                {"removeNode(num)", [&] { EXPECT_FALSE(nodes->removeNode(num)); }},
                {"removeNode(stranger)", [&] { EXPECT_FALSE(nodes->removeNode(stranger.get())); }},
                {"replaceNode(stranger)",
                 [&] { EXPECT_FALSE(nodes->replaceNode(stranger.get(), stranger.get())); }},
                {"set1Value(-8)", [&] { EXPECT_FALSE(nodes->set1Value(-8, stranger.get())); }},
                {"set1Value(most)",
                 [&] { EXPECT_FALSE(nodes->set1Value(INT_MAX, stranger.get())); }},
                {"setValues(-1)", [&] { EXPECT_FALSE(nodes->setValues(-1, 2, two)); }},
                {"setValues(null)", [&] { EXPECT_FALSE(nodes->setValues(0, 2, nullptr)); }},
                {"setNum(-1)", [&] { nodes->setNum(-1); }},
                {"deleteValues(num + 1)", [&] { nodes->deleteValues(num + 1, 1); }},
            },
            [&] { return textOf(*nodes); });
    }
    expectRefused({{"bindTo(null)", [&] { loose.bindTo(nullptr); }},
                   {"bindTo twice", [&] { loose.bindTo(bound->getChildren()); }}},
                  [&] { return textOf(loose) + (loose.isBound() ? "bound" : ""); });
}

TEST_F(Contracts, GroupsAndPathsRefuseWhatIsNotThere)
{
    SoNode* first = group->getChild(0);
    expectRefused(
        {
            {"getChild(-1)", [&] { EXPECT_EQ(group->getChild(-1), nullptr); }},
            {"getChild(num)", [&] { EXPECT_EQ(group->getChild(2), nullptr); }},
            {"addChild(null)", [&] { EXPECT_FALSE(group->addChild(nullptr)); }},
            {"insertChild(null)", [&] { EXPECT_FALSE(group->insertChild(nullptr, 0)); }},
            {"insertChild(-1)", [&] { EXPECT_FALSE(group->insertChild(stranger.get(), -1)); }},
            {"insertChild(num + 1)", [&] { EXPECT_FALSE(group->insertChild(stranger.get(), 3)); }},
            {"removeChild(-1)", [&] { EXPECT_FALSE(group->removeChild(-1)); }},
            {"removeChild(num)", [&] { EXPECT_FALSE(group->removeChild(2)); }},
            {"removeChild(stranger)", [&] { EXPECT_FALSE(group->removeChild(stranger.get())); }},
            {"removeChild(null)",
             [&] { EXPECT_FALSE(group->removeChild(static_cast<SoNode*>(nullptr))); }},
            {"replaceChild(num)", [&] { EXPECT_FALSE(group->replaceChild(2, stranger.get())); }},
            {"replaceChild(null)", [&] { EXPECT_FALSE(group->replaceChild(0, nullptr)); }},
            {"replaceChild(stranger)",
             [&] { EXPECT_FALSE(group->replaceChild(stranger.get(), first)); }},
            {"setChildren(null)",
             [&] {
                 EXPECT_FALSE(group->setChildren({first, nullptr}));
             }},
            {"SoGroup(-1)", [] { SoRef<SoGroup>(new SoGroup(-1)); }},
            {"getAuditors()[-1]", [&] { EXPECT_EQ(group->getAuditors().getObject(-1), nullptr); }},
        },
        [this] { return children(); });

    const SoRef<SoPath> path(new SoPath(group.get()));
    path->append(1);
    expectRefused(
        {
            {"getNode(-1)", [&] { EXPECT_EQ(path->getNode(-1), nullptr); }},
            {"getNodeFromTail(2)", [&] { EXPECT_EQ(path->getNodeFromTail(2), nullptr); }},
            {"getIndex(2)", [&] { EXPECT_EQ(path->getIndex(2), -1); }},
            {"append(null)", [&] { path->append(nullptr, 0); }},
            {"append below a leaf", [&] { path->append(0); }},
            {"append(-1)", [&] { path->append(-1); }},
            {"truncate(-1)", [&] { path->truncate(-1); }},
            {"truncate(length + 1)", [&] { path->truncate(3); }},
            {"copy(-1)", [&] { SoRef<SoPath>(path->copy(-1)); }},
            {"copy(length + 1)", [&] { SoRef<SoPath>(path->copy(3)); }},
            {"copy(less than none)", [&] { SoRef<SoPath>(path->copy(0, -1)); }},
            {"containsPath(null)", [&] { EXPECT_FALSE(path->containsPath(nullptr)); }},
            {"pop of nothing", [] { SoRef<SoPath>(new SoPath)->pop(); }},
        },
        [&] { return std::to_string(path->getLength()) + children(); });
    EXPECT_EQ(SoRef<SoPath>(path->copy(1, INT_MAX))->getLength(), 1);

    const SoRef<SoSelection> selection(new SoSelection);
    selection->addChild(group.get());
    selection->select(group.get());
    expectRefused({{"select(null path)", [&] { selection->select(static_cast<SoPath*>(nullptr)); }},
                   {"select(null node)", [&] { selection->select(static_cast<SoNode*>(nullptr)); }},
                   {"select elsewhere", [&] { selection->select(path.get()); }},
                   {"deselect(-1)", [&] { selection->deselect(-1); }},
                   {"deselect(num)", [&] { selection->deselect(1); }},
                   {"getPath(num)", [&] { EXPECT_EQ(selection->getPath(1), nullptr); }}},
                  [&] { return std::to_string(selection->getNumSelected()); });
}

TEST_F(Contracts, ContainersAndTheirTablesRefuseNullAndStrangers)
{
    const SoRef<SoMaterial> material(new SoMaterial);
    material->shininess = 0.5f;
    const SoFieldData* data = material->getFieldData();
    const int num = data->getNumFields();
    SoDeclaredFields declared(material.get());
    Listener listener;
    material->addAuditor(&listener, SoAuditor::SENSOR);
    expectRefused(
        {
            {"set(null)", [&] { EXPECT_FALSE(material->set(static_cast<const char*>(nullptr))); }},
            {"copyFieldValues(null)", [&] { material->copyFieldValues(nullptr); }},
            {"copyFieldValues(stranger)", [&] { material->copyFieldValues(stranger.get()); }},
            {"getFieldName(-1)", [&] { EXPECT_TRUE(data->getFieldName(-1).isEmpty()); }},
            {"getField(num)", [&] { EXPECT_EQ(data->getField(material.get(), num), nullptr); }},
            {"getField(null)", [&] { EXPECT_EQ(data->getField(nullptr, 0), nullptr); }},
            {"getDeclared(0)", [&] { EXPECT_EQ(declared.getDeclared(0), nullptr); }},
            {"add(null)", [&] { declared.add("x", nullptr); }},
            {"addAuditor(null)", [&] { material->addAuditor(nullptr, SoAuditor::SENSOR); }},
        },
        [&] {
            SbString text;
            material->get(text);
            return text.toStdString();
        });
    EXPECT_EQ(listener.changes, 0);
    material->removeAuditor(&listener);

    const SoRef<SoSeparatorKit> kit(new SoSeparatorKit);
    const SoNodekitCatalog* catalog = kit->getNodekitCatalog();
    const int parts = catalog->getNumEntries();
    EXPECT_TRUE(catalog->getName(-1).isEmpty()); // "there is no such part", no mistake
    const SoRef<SoNodeKitListPart> list(new SoNodeKitListPart);
    list->addChild(new SoCube);
    expectRefused(
        {
            {"getName(num)", [&] { EXPECT_TRUE(catalog->getName(parts).isEmpty()); }},
            {"getType(-2)", [&] { EXPECT_TRUE(catalog->getType(-2).isBad()); }},
            {"getPartsBelow(num)", [&] { EXPECT_TRUE(catalog->getPartsBelow(parts).empty()); }},
            {"getChild(-1)", [&] { EXPECT_EQ(list->getChild(-1), nullptr); }},
            {"addChild(null)", [&] { EXPECT_FALSE(list->addChild(nullptr)); }},
            {"insertChild(2)", [&] { EXPECT_FALSE(list->insertChild(stranger.get(), 2)); }},
            {"replaceChild(1)", [&] { EXPECT_FALSE(list->replaceChild(1, stranger.get())); }},
            {"removeChild(1)", [&] { EXPECT_FALSE(list->removeChild(1)); }},
            {"removeChild(stranger)", [&] { EXPECT_FALSE(list->removeChild(stranger.get())); }},
            {"containerSet(null)", [&] { EXPECT_FALSE(list->containerSet(nullptr)); }},
        },
        [&] { return std::to_string(list->getNumChildren()); });
}

TEST_F(Contracts, ActionsInputsAndOutputsRefuseNothing)
{
    SoGetBoundingBoxAction box{SbViewportRegion()};
    SoSearchAction search;
    search.setType(SoCube::getClassTypeId());
    SoRayPickAction pick{SbViewportRegion()};
    pick.setRay({0, 0, 10}, {0, 0, -1});
    SoOutput out;
    out.setBuffer();
    SoWriteAction write(&out);
    const SoRef<SoPath> empty(new SoPath);
    std::vector<Misuse> misuses;
    for (SoAction* action : {static_cast<SoAction*>(&box), static_cast<SoAction*>(&search),
                             static_cast<SoAction*>(&pick), static_cast<SoAction*>(&write)}) {
        misuses.push_back({"null node", [=] { action->apply(static_cast<SoNode*>(nullptr)); }});
        misuses.push_back({"null path", [=] { action->apply(static_cast<SoPath*>(nullptr)); }});
        misuses.push_back({"empty path", [=] { action->apply(empty.get()); }});
        misuses.push_back({"getCurNode(-1)", [=] { action->getCurNode(-1); }});
    }
    SoInput in;
    const char text[] = "Cube { }";
    ASSERT_TRUE(in.setBuffer(text, sizeof text - 1));
    SoState state(nullptr);
    misuses.insert(
        misuses.end(),
        {
            {"getPickedPoint(-1)", [&] { EXPECT_EQ(pick.getPickedPoint(-1), nullptr); }},
            {"pop()", [&] { state.pop(); }},
            {"setBuffer(null)", [&] { EXPECT_FALSE(in.setBuffer(nullptr, 5)); }},
            {"setBuffer(null) of an output", [&] { out.setBuffer(nullptr, 5); }},
            {"setCompression(11)", [&] { out.setCompression(true, 11); }},
            {"readAll(null)", [] { EXPECT_EQ(SoDB::readAll(nullptr), nullptr); }},
            {"readAllVRML(null)", [] { EXPECT_EQ(SoDB::readAllVRML(nullptr), nullptr); }},
            {"setOffset beyond the end", [&] { in.getTokenizer().setOffset(sizeof text + 1); }},
        });
    expectRefused(misuses, [&] {
        return std::to_string(state.getDepth()) + std::to_string(in.getTokenizer().getOffset())
               + (in.isOpen() ? "open" : "") + (out.isCompressed() ? "small" : "")
               + std::string(out.getText());
    });
    pick.apply(group.get());
    ASSERT_NE(pick.getPickedPoint(), nullptr);
    auto errors = support::expectErrors();
    EXPECT_EQ(pick.getPickedPoint()->getObjectToWorld(stranger.get()), SbMatrix());

    SoFaceDetail face;
    face.setPoints(std::vector<SoPointDetail>(3));
    SoOffscreenRenderer renderer{SbViewportRegion()};
    SoSFFloat field;
    expectRefused(
        {
            {"getPoint(-1)", [&] { EXPECT_EQ(face.getPoint(-1).getCoordinateIndex(), -1); }},
            {"getPoint(num)", [&] { EXPECT_EQ(face.getPoint(3).getCoordinateIndex(), -1); }},
            {"render(null node)",
             [&] { EXPECT_FALSE(renderer.render(static_cast<SoNode*>(nullptr))); }},
            {"render(null path)",
             [&] { EXPECT_FALSE(renderer.render(static_cast<SoPath*>(nullptr))); }},
            {"writeToPNG(null name)",
             [&] { EXPECT_FALSE(renderer.writeToPNG(static_cast<const char*>(nullptr))); }},
            {"writeToPNG(null file)",
             [&] { EXPECT_FALSE(renderer.writeToPNG(static_cast<std::FILE*>(nullptr))); }},
        },
        [&] { return std::to_string(face.getNumPoints()); });
    // Nothing to listen to is what detach() leaves, and nothing is routed to or from nowhere.
    SoNodeSensor().attach(nullptr);
    SoFieldSensor().attach(nullptr);
    SoPathSensor().attach(nullptr);
    EXPECT_FALSE(SoRoute::add(nullptr, &field) || SoRoute::add(&field, nullptr));
    EXPECT_FALSE(SoRoute::remove(nullptr, &field) || SoRoute::hasSources(nullptr));
}

/// The library of values; its own suite has the arithmetic.
TEST_F(Contracts, TextsAndMatricesRefuseNull)
{
    SbString text("abc");
    SbMatrix matrix;
    matrix.setTranslate({1, 2, 3});
    SbRotation rotation(SbVec3f(0, 0, 1), 1.0f);
    const SbMatrix was = matrix;
    const SbRotation turned = rotation;
    expectRefused({{"SbString(null, 5)", [] { EXPECT_TRUE(SbString(nullptr, 5).isEmpty()); }},
                   {"text[4]", [&] { EXPECT_EQ(std::as_const(text)[4], '\0'); }},
                   {"text[3] = x", [&] { text[3] = 'x'; }},
                   {"SbMatrix(null)",
                    [] { EXPECT_TRUE(SbMatrix(static_cast<const float*>(nullptr)).isIdentity()); }},
                   {"matrix.setValue(null)", [&] { matrix.setValue(nullptr); }},
                   {"rotation.setValue(null)",
                    [&] { rotation.setValue(static_cast<const float*>(nullptr)); }}},
                  [&] {
                      return text.toStdString() + (matrix == was ? "" : "changed")
                             + (rotation == turned ? "" : "turned");
                  });
    EXPECT_EQ(std::as_const(text)[3], '\0');
}

TEST_F(Contracts, StopTheProgramWhereTheyAreToldTo)
{
    SoMFFloat values;
    EXPECT_DEATH(
        {
            kalmyr::setContractsStop(true);
            values.set1Value(-8, 1.0f);
        },
        "");
}
