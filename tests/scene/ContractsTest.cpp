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
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoSphere.h>

#include <climits>
#include <functional>
#include <memory>

using fieldtest::Listener;

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
            {"getField(num)", [&] { EXPECT_EQ(data->getField(material.get(), num), nullptr); }},
            {"getField(null)", [&] { EXPECT_EQ(data->getField(nullptr, 0), nullptr); }},
            {"add(null)", [&] { declared.add("x", nullptr); }},
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
    }
    SoInput in;
    const char text[] = "Cube { }";
    ASSERT_TRUE(in.setBuffer(text, sizeof text - 1));
    misuses.insert(
        misuses.end(),
        {
            {"getPickedPoint(-1)", [&] { EXPECT_EQ(pick.getPickedPoint(-1), nullptr); }},
            {"setBuffer(null)", [&] { EXPECT_FALSE(in.setBuffer(nullptr, 5)); }},
            {"setBuffer(null) of an output", [&] { out.setBuffer(nullptr, 5); }},
            {"setCompression(11)", [&] { out.setCompression(true, 11); }},
            {"readAll(null)", [] { EXPECT_EQ(SoDB::readAll(nullptr), nullptr); }},
            {"readAllVRML(null)", [] { EXPECT_EQ(SoDB::readAllVRML(nullptr), nullptr); }},
        });
    expectRefused(misuses, [&] {
        return std::to_string(in.getTokenizer().getOffset()) + (in.isOpen() ? "open" : "")
               + (out.isCompressed() ? "small" : "") + std::string(out.getText());
    });
    pick.apply(group.get());
    ASSERT_NE(pick.getPickedPoint(), nullptr);
    auto errors = support::expectErrors();
    EXPECT_EQ(pick.getPickedPoint()->getObjectToWorld(stranger.get()), SbMatrix());
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
