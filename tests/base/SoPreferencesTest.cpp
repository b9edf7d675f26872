#include "support/ErrorGuard.h"

#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/base/SoPreferences.h>

#include <cstdlib>

#include <gtest/gtest.h>

namespace {

class SoPreferencesTest : public testing::Test {
protected:
    void TearDown() override
    {
        unsetenv("KMR_PREFERENCES_FILE");
        unsetenv("KMR_TEST_VALUE");
        SoPreferences::removeValue("KMR_TEST_VALUE");
        std::remove(m_file.getString());
    }

    void useFile(const char* text)
    {
        ASSERT_TRUE(SbFileHelper::writeFile(m_file, text));
        setenv("KMR_PREFERENCES_FILE", m_file.getString(), 1);
    }

    SbString m_file =
        SbString(testing::TempDir()) + SbString::format("kalmyr_preferences_%d", rand());
};

} // namespace

TEST_F(SoPreferencesTest, EnvironmentWinsOverFileWinsOverProgram)
{
    EXPECT_FALSE(SoPreferences::hasValue("KMR_TEST_VALUE"));
    EXPECT_EQ(SoPreferences::getString("KMR_TEST_VALUE", "none"), "none");
    SoPreferences::setValue("KMR_TEST_VALUE", "program");
    EXPECT_EQ(SoPreferences::getValue("KMR_TEST_VALUE"), "program");
    useFile(
        "# KMR_TEST_VALUE=comment\n\nno equals sign\n=no name\n  KMR_TEST_VALUE = file = 1 \r\n");
    EXPECT_EQ(SoPreferences::getValue("KMR_TEST_VALUE"), "file = 1");
    setenv("KMR_TEST_VALUE", "", 1);
    EXPECT_EQ(SoPreferences::findValue("KMR_TEST_VALUE"), SbString());
    unsetenv("KMR_TEST_VALUE");
    unsetenv("KMR_PREFERENCES_FILE");
    EXPECT_EQ(SoPreferences::getValue("KMR_TEST_VALUE"), "program");
    SoPreferences::removeValue("KMR_TEST_VALUE");
    EXPECT_FALSE(SoPreferences::hasValue("KMR_TEST_VALUE"));
}

TEST_F(SoPreferencesTest, TypedReadersFallBackOnNonsense)
{
    const auto asBool = [](const char* text, bool fallback) {
        SoPreferences::setValue("KMR_TEST_VALUE", text);
        return SoPreferences::getBool("KMR_TEST_VALUE", fallback);
    };
    for (const char* text : {"1", "true", " YES ", "On", "-7"})
        EXPECT_TRUE(asBool(text, false)) << text;
    for (const char* text : {"0", "False", "no", "OFF"})
        EXPECT_FALSE(asBool(text, true)) << text;
    for (const char* text : {"", "maybe", "1.5"})
        EXPECT_TRUE(asBool(text, true) && !asBool(text, false)) << text;
    SoPreferences::setFloat("KMR_TEST_VALUE", 0.1f);
    EXPECT_EQ(SoPreferences::getFloat("KMR_TEST_VALUE", 3), 0.1f);
    EXPECT_EQ(SoPreferences::getInt("KMR_TEST_VALUE", 3), 3);
    SoPreferences::setInt("KMR_TEST_VALUE", -12);
    EXPECT_EQ(SoPreferences::getInt("KMR_TEST_VALUE", 3), -12);
}

TEST_F(SoPreferencesTest, AnUnreadableFileIsReportedOnce)
{
    support::ErrorScope errors;
    setenv("KMR_PREFERENCES_FILE", "/nowhere/at/all", 1);
    SoPreferences::setValue("KMR_TEST_VALUE", "x");
    EXPECT_EQ(SoPreferences::getValue("KMR_TEST_VALUE"), "x");
    EXPECT_EQ(SoPreferences::getValue("KMR_TEST_VALUE"), "x");
    EXPECT_EQ(errors.count(), 1u);
    EXPECT_TRUE(errors.contains("/nowhere/at/all"));
}
