#include "support/ErrorGuard.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include <gtest/gtest.h>

namespace support {
namespace {

std::mutex s_mutex;
ErrorScope* s_scope = nullptr;
std::vector<std::string> s_unannounced;

std::vector<std::string> takeUnannounced()
{
    const std::lock_guard lock(s_mutex);
    return std::exchange(s_unannounced, {});
}

/// Fails the test that let an error pass.
class Listener final : public ::testing::EmptyTestEventListener
{
    void OnTestEnd(const ::testing::TestInfo&) override
    {
        for (const std::string& text : takeUnannounced())
            ADD_FAILURE() << "unannounced error: " << text;
    }

    // Errors outside of any case: static set-up and tear-down.
    void OnTestSuiteEnd(const ::testing::TestSuite&) override
    {
        for (const std::string& text : takeUnannounced())
            ADD_FAILURE() << "unannounced error: " << text;
    }
};

} // namespace

ErrorScope::ErrorScope()
{
    const std::lock_guard lock(s_mutex);
    m_outer = std::exchange(s_scope, this);
}

ErrorScope::~ErrorScope()
{
    {
        const std::lock_guard lock(s_mutex);
        s_scope = m_outer;
    }
    if (m_texts.empty() && !m_mayStayEmpty)
        ADD_FAILURE() << "an announced error was not posted";
}

std::size_t ErrorScope::count() const
{
    const std::lock_guard lock(s_mutex);
    return m_texts.size();
}

std::vector<std::string> ErrorScope::texts() const
{
    const std::lock_guard lock(s_mutex);
    return m_texts;
}

bool ErrorScope::contains(const std::string& part) const
{
    const std::lock_guard lock(s_mutex);
    return std::any_of(m_texts.begin(), m_texts.end(), [&part](const std::string& text) {
        return text.find(part) != std::string::npos;
    });
}

void ErrorScope::clear()
{
    const std::lock_guard lock(s_mutex);
    m_texts.clear();
    m_mayStayEmpty = true;
}

void ErrorScope::mayStayEmpty()
{
    m_mayStayEmpty = true;
}

ErrorScope expectErrors()
{
    return ErrorScope();
}

void report(const std::string& text)
{
    const std::lock_guard lock(s_mutex);
    (s_scope ? s_scope->m_texts : s_unannounced).push_back(text);
}

void installErrorGuard()
{
    ::testing::UnitTest::GetInstance()->listeners().Append(new Listener);
}

} // namespace support
