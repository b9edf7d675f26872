#include <kalmyr/base/SoModule.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <set>
#include <string>

namespace {

/// Functions that a library defines for others, demangled, without those that the compiler makes of
/// templates.
std::set<std::string> exportedFunctions(const std::string& library)
{
    std::set<std::string> names;
    FILE* pipe = popen(("nm -DC --defined-only " + library).c_str(), "r");
    std::array<char, 4096> line;
    while (pipe && fgets(line.data(), line.size(), pipe)) {
        const std::string text(line.data());
        const auto kind = text.find(" T ");
        if (kind != std::string::npos)
            names.insert(text.substr(kind + 3, text.find_last_not_of('\n') - kind - 2));
    }
    if (pipe)
        pclose(pipe);
    return names;
}

TEST(Exports, AreTheLaunchInterfaceAndNothingElse)
{
    const auto names = exportedFunctions(MIRABO_LIBRARY_DIR "/libMirabo.so");
    ASSERT_FALSE(names.empty()) << "nm is needed";
    for (const char* plain :
         {"_startNode", "_startSceneManager", "_startRenderArea", "_startStandalone", "_stop",
          "_isRunning", "_processEvents", "_setPickAction", "_setSceneGraph"})
        EXPECT_EQ(names.count(plain), 1U) << plain;
    EXPECT_EQ(names.count("SoMiraboImpl::processEvents()"), 1U);
    EXPECT_EQ(names.count("SoMiraboImpl::startStandalone(int&, char**)"), 1U);
    const auto known = [](const std::string& name) {
        return name[0] == '_' || name.rfind("SoMirabo::", 0) == 0
               || name.rfind("SoMiraboImpl::", 0) == 0;
    };
    for (const std::string& name : names)
        EXPECT_TRUE(known(name)) << name;
}

TEST(Module, DescribesItselfOnceItIsLoaded)
{
    const SoModule::Description* module = SoModule::find("Mirabo.dll");
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(module->version, "9.9.39.0");
    EXPECT_EQ(module->architecture, "64 bits");
    EXPECT_FALSE(module->compiler.isEmpty());
}

} // namespace
