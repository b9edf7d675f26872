#include "ActionTestNodes.h"

#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoLightElement.h>

#include <gtest/gtest.h>

using actiontest::Mover;

namespace {

class SoStateTest : public testing::Test {
protected:
    static void SetUpTestSuite() { actiontest::init(); }

    SbMatrix moved(float x)
    {
        SbMatrix m;
        m.setTranslate(SbVec3f(x, 0, 0));
        return m;
    }
    float x() { return SoModelMatrixElement::get(&m_state)[3][0]; }
    std::uint64_t matrixId() { return m_state.getValueId(SoModelMatrixElement::getStackIndex()); }

    SoState m_state{nullptr};
    SoRef<Mover> m_a{new Mover};
    SoRef<Mover> m_b{new Mover};
};

TEST_F(SoStateTest, BringsBackWhatAFrameChanged)
{
    SoModelMatrixElement::mult(&m_state, m_a.get(), moved(1));
    const std::uint64_t outside = matrixId();
    for (int round = 0; round < 3; ++round) { // the second round reuses storage
        m_state.push();
        m_state.push(); // a frame without changes of its own
        SoModelMatrixElement::mult(&m_state, m_b.get(), moved(10));
        m_state.push();
        SoModelMatrixElement::mult(&m_state, m_b.get(), moved(100));
        m_state.write<SoComplexityElement>().set(m_b.get(), {0.25f});
        EXPECT_EQ(x(), 111);
        m_state.pop();
        EXPECT_EQ(x(), 11);
        EXPECT_EQ(m_state.get<SoModelMatrixElement>().getNode(), m_b.get());
        EXPECT_EQ(SoComplexityElement::get(&m_state), 0.5f);
        m_state.pop();
        m_state.pop();
        EXPECT_EQ(x(), 1);
        EXPECT_EQ(matrixId(), outside);
        EXPECT_EQ(m_state.get<SoModelMatrixElement>().getNode(), m_a.get());
    }
    m_state.push();
    m_state.reset();
    EXPECT_EQ(m_state.getDepth(), 0);
    EXPECT_TRUE(SoModelMatrixElement::get(&m_state).isIdentity());
    EXPECT_EQ(matrixId(), 0u);
}

TEST_F(SoStateTest, ValueIdsAreEqualForEqualValuesOnly)
{
    const auto idAfter = [this](std::initializer_list<SoNode*> nodes) {
        m_state.reset();
        for (SoNode* node : nodes)
            SoModelMatrixElement::mult(&m_state, node, moved(1));
        return matrixId();
    };
    const std::uint64_t ab = idAfter({m_a.get(), m_b.get()});
    EXPECT_EQ(idAfter({m_a.get(), m_b.get()}), ab);
    EXPECT_NE(idAfter({m_b.get(), m_a.get()}), ab);
    EXPECT_NE(idAfter({m_a.get()}), ab);
    m_a->by = SbVec3f(3, 0, 0);
    EXPECT_NE(idAfter({m_a.get(), m_b.get()}), ab);

    SoModelMatrixElement::makeIdentity(&m_state, m_a.get());
    EXPECT_EQ(matrixId(), 0u) << "the identity is the default";

    // One change stamps both groups alike; their ids must not be taken for one value.
    SoRef<SoGroup> g(new SoGroup), h(new SoGroup);
    g->addChild(m_a.get());
    h->addChild(m_a.get());
    m_a->touch();
    ASSERT_EQ(g->getNodeId(), h->getNodeId());
    EXPECT_NE(idAfter({g.get()}), idAfter({h.get()}));
}

TEST_F(SoStateTest, LightsOfALevelDoNotShineOutside)
{
    SoLightRecord light;
    light.intensity = 0.5f;
    SoLightElement::add(&m_state, m_a.get(), light);
    const auto lights = m_state.get<SoLightElement>().value();
    m_state.push();
    light.intensity = 0.25f;
    SoLightElement::add(&m_state, m_b.get(), light);
    ASSERT_EQ(SoLightElement::get(&m_state).size(), 2u);
    EXPECT_EQ(SoLightElement::get(&m_state)[1].intensity, 0.25f);
    m_state.pop();
    EXPECT_EQ(m_state.get<SoLightElement>().value(), lights);
    EXPECT_EQ(lights->size(), 1u);
}

TEST_F(SoStateTest, OverrideLocksOneElementUntilThePop)
{
    using Override = SoOverrideElement;
    m_a->setOverride(true);
    m_state.push();
    EXPECT_TRUE(Override::maySet(&m_state, m_b.get(), Override::MATERIAL));
    EXPECT_TRUE(Override::maySet(&m_state, m_a.get(), Override::MATERIAL));
    EXPECT_FALSE(Override::maySet(&m_state, m_b.get(), Override::MATERIAL));
    EXPECT_TRUE(Override::maySet(&m_state, m_a.get(), Override::MATERIAL));
    EXPECT_TRUE(Override::maySet(&m_state, m_b.get(), Override::DRAW_STYLE));
    m_state.pop();
    EXPECT_TRUE(Override::maySet(&m_state, m_b.get(), Override::MATERIAL));
}

} // namespace
