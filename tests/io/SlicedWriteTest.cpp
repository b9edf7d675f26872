#include "IoSupport.h"

#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoSlicedWrite.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/shapes/SoCube.h>

#include <filesystem>
#include <fstream>
#include <random>

namespace {

constexpr int kNumPoints = 20'000;

/// Every look at the clock takes a millisecond.
SbTime ticking()
{
    static double now = 0;
    return SbTime(now += 0.001);
}

class SlicedWrite : public io::IoTest {
protected:
    void SetUp() override
    {
        io::IoTest::SetUp();
        SbTime::setSource(&ticking);
    }
    void TearDown() override
    {
        SbTime::setSource(nullptr);
        io::IoTest::TearDown();
    }

    /// Shared nodes, a connection, a long field and a deep branch.
    static SoRef<SoSeparator> makeScene()
    {
        SoRef<SoSeparator> root(new SoSeparator);
        auto* points = new SoCoordinate3;
        std::vector<SbVec3f> values(kNumPoints);
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = SbVec3f(static_cast<float>(i), 0.5f, 0);
        points->point.setValues(0, {values.data(), values.size()});
        root->addChild(points);
        auto* from = new SoTranslation;
        auto* to = new SoTranslation;
        to->translation.connectFrom(&from->translation);
        root->addChild(from);
        root->addChild(to);
        auto* shared = new SoCube;
        SoGroup* at = root.get();
        for (int level = 0; level < 2000; ++level) {
            at->addChild(shared);
            auto* below = new SoSeparator;
            at->addChild(below);
            at = below;
        }
        return root;
    }
};

TEST_F(SlicedWrite, GivesTheTextThatIsWrittenInOneGo)
{
    const SoRef<SoSeparator> root = makeScene();
    auto* points = static_cast<SoCoordinate3*>(root->getChild(0));
    const std::string whole = io::write(root.get());
    SoOutput out;
    out.setBuffer();
    SoSlicedWrite write(root.get(), &out);
    int numSlices = 1;
    bool changed = false;
    while (write.run(SbTime(0.002)) == SoSlicedWrite::RUNNING) {
        ++numSlices;
        if (!changed && out.getText().size() > 1000) {
            changed = true; // in the middle of its text
            points->point.setNum(1);
        }
    }
    EXPECT_EQ(write.getState(), SoSlicedWrite::DONE);
    EXPECT_TRUE(changed);
    EXPECT_EQ(std::string(out.getText()), whole);
    EXPECT_GT(numSlices, 50);
}

TEST_F(SlicedWrite, SurvivesEditsAndLeavesNoFileWhenCancelled)
{
    const std::string path = folder() + "/scene.ky";
    std::mt19937 random(7);
    int numCancelled = 0;
    for (int round = 0; round < 40; ++round) {
        std::ofstream(path) << "old";
        SoRef<SoSeparator> root = makeScene();
        SoOutput out;
        ASSERT_TRUE(out.openFile(path.c_str()));
        bool done = false;
        {
            SoSlicedWrite write(root.get(), &out);
            const int numSlices = 1 + round * 3;
            for (int slice = 0; slice < numSlices; ++slice) {
                done = write.run(SbTime(0.001)) == SoSlicedWrite::DONE;
                // Whatever is above or beside the present place goes.
                SoGroup* at = root.get();
                for (auto down = random() % 50; down-- > 0 && at->getNumChildren() > 1;)
                    at = static_cast<SoGroup*>(at->getChild(at->getNumChildren() - 1));
                if (slice % 2 == 0 || at == root.get())
                    at->removeAllChildren();
                else
                    at->insertChild(new SoCube, 0);
            }
            root.reset();
        }
        EXPECT_EQ(out.closeFile(), done);
        std::string text;
        std::ifstream file(path);
        std::getline(file, text);
        EXPECT_EQ(text + '\n', done ? io::kAscii : "old\n");
        numCancelled += !done;
    }
    EXPECT_GT(numCancelled, 10);
}

} // namespace
