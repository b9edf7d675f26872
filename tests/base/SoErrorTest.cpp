#include "support/ErrorGuard.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoErrorStack.h>
#include <kalmyr/base/SoMemoryError.h>
#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/base/SoReadError.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

struct Seen {
    std::string type;
    std::string text;
};

void record(const SoError* error, void* list)
{
    static_cast<std::vector<Seen>*>(list)->push_back(
        {error->getTypeName(), error->getDebugString().getString()});
}

// Records what reaches a class's own handler; without one again afterwards.
template <typename Error>
class Handler {
public:
    Handler() { Error::setHandlerCallback(record, &m_seen); }
    ~Handler() { Error::setHandlerCallback(nullptr); }
    Handler(const Handler&) = delete;
    Handler& operator=(const Handler&) = delete;
    const std::vector<Seen>& seen() const { return m_seen; }

private:
    std::vector<Seen> m_seen;
};

} // namespace

TEST(SoError, ClassesWithoutAHandlerUseThatOfTheirParent)
{
    support::ErrorScope parent;
    {
        const Handler<SoReadError> own;
        EXPECT_EQ(SoReadError::getHandlerData(), &own.seen());
        SoReadError::post("f.wrl", 3, 14, "expected %s", "'{'");
        SoDebugError::post("Somebody::call", "bad index %d", 9);
        SoMemoryError::post("a picture");
        EXPECT_EQ(parent.count(), 2u);
        ASSERT_EQ(own.seen().size(), 1u);
        EXPECT_EQ(own.seen()[0].type, "SoReadError");
        EXPECT_EQ(own.seen()[0].text, "f.wrl:3:14: error: expected '{'");
    }
    EXPECT_EQ(SoReadError::getHandlerCallback(), SoError::getHandlerCallback());
    SoReadError::post("", 0, 0, "gone");
    SoError::post("plain");
    EXPECT_EQ(parent.texts(),
              (std::vector<std::string>{"Kalmyr error in Somebody::call: bad index 9",
                                        "Kalmyr error: not enough memory for a picture",
                                        "<memory>: error: gone", "Kalmyr error: plain"}));
}

TEST(SoError, ErrorsTellWhatTheyKnow)
{
    const auto check = [](const SoError* error, void* count) {
        if (const auto* read = dynamic_cast<const SoReadError*>(error)) {
            EXPECT_EQ(read->getFileName(), "f");
            EXPECT_EQ(read->getLine() * 100 + read->getColumn(), 203);
            EXPECT_EQ(read->getMessage(), "m");
        } else {
            const auto* debug = dynamic_cast<const SoDebugError*>(error);
            ASSERT_TRUE(debug);
            EXPECT_EQ(debug->getSeverity(), SoDebugError::SEV_WARNING);
            EXPECT_EQ(debug->getSource(), "s");
        }
        ++*static_cast<int*>(count);
    };
    int count = 0;
    SoErrorCB* const guard = SoError::getHandlerCallback();
    SoError::setHandlerCallback(check, &count);
    SoReadError::post("f", 2, 3, "m");
    SoDebugError::postWarning("s", "w");
    SoError::setHandlerCallback(guard);
    EXPECT_EQ(count, 2);
}

TEST(SoError, WithoutAnyHandlerTheTextGoesToTheErrorStream)
{
    SoErrorCB* const guard = SoError::getHandlerCallback();
    SoError::setHandlerCallback(nullptr);
    testing::internal::CaptureStderr();
    SoDebugError::postInfo("Here", "100%%");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Kalmyr info in Here: 100%\n");
    SoError::setHandlerCallback(guard);
}

TEST(SoError, HandlersMayPostAndChangeHandlers)
{
    static int s_depth = 0;
    const auto again = [](const SoError*, void*) {
        ++s_depth;
        SoMemoryError::setHandlerCallback(nullptr);
        SoMemoryError::post("the message itself");
    };
    support::ErrorScope parent;
    SoMemoryError::setHandlerCallback(again);
    SoMemoryError::post("something");
    EXPECT_EQ(s_depth, 1);
    EXPECT_EQ(parent.count(), 1u);
}

namespace {

__attribute__((noinline)) void failDeepInside(SbString& currentStack)
{
    currentStack = SoErrorStack::currentStack();
    SoErrorStack::post("it is %s", "over");
    currentStack += ""; // A last call would replace this one on the stack.
}

} // namespace

TEST(SoErrorStack, RecordsTheCallsOnlyWhenThePreferenceIsSet)
{
    static std::vector<SbString> s_stacks;
    const auto keep = [](const SoError* error, void*) {
        const auto* stack = dynamic_cast<const SoErrorStack*>(error);
        ASSERT_TRUE(stack);
        EXPECT_EQ(stack->getDebugString(), "it is over");
        s_stacks.push_back(stack->getStack());
    };
    s_stacks.clear();
    SoErrorStack::setHandlerCallback(keep);
    SbString stack;
    failDeepInside(stack);
    SoPreferences::setValue("KMR_DEBUG_STACKERROR", "1");
    failDeepInside(stack);
    SoPreferences::removeValue("KMR_DEBUG_STACKERROR");
    SoErrorStack::setHandlerCallback(nullptr);

    ASSERT_EQ(s_stacks.size(), 2u);
    EXPECT_TRUE(s_stacks[0].isEmpty());
    for (const SbString& text : {s_stacks[1], stack}) {
        EXPECT_TRUE(text.startsWith("#0 ") && text.contains("\n#1 ")) << text;
        EXPECT_TRUE(text.contains(" main (")) << text;
#ifndef NDEBUG
        const SbString innermost = text.getSubString(0, text.find("\n"));
        // Builds without debug information know neither lines nor the names of what is not
        // exported.
        EXPECT_TRUE(innermost.contains("failDeepInside") && innermost.contains("SoErrorTest.cpp:"))
            << text;
#endif
    }
}

TEST(SoErrorStack, OtherErrorsDoNotReachItsHandler)
{
    support::ErrorScope parent;
    const Handler<SoErrorStack> own;
    SoError::post("plain");
    SoDebugError::post("x", "wrong");
    EXPECT_TRUE(own.seen().empty());
    EXPECT_EQ(parent.count(), 2u);
}
