#include "support/ErrorGuard.h"

#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoError.h>

#include <algorithm>
#include <mutex>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

#ifdef __SANITIZE_ADDRESS__
// Leaks are reported when the process ends, and those of a driver or platform plug-in can only
// be told from ours while it is mapped: under the leak checker nothing is unloaded.
extern "C" __attribute__((visibility("default"))) int dlclose(void*) noexcept
{
    return 0;
}
#endif

namespace support {
namespace {

std::mutex s_mutex;
ErrorScope* s_scope = nullptr;
bool s_contractsStop = false; // outside of all scopes
std::vector<std::string> s_unannounced;

bool isInformation(const SoError& error)
{
    return error.getTypeName() == std::string_view("SoDebugError")
           && static_cast<const SoDebugError&>(error).getSeverity() == SoDebugError::SEV_INFO;
}

void handleToolkitError(const SoError* error, void*)
{
    if (!isInformation(*error))
        report(error->getPrintedText().getString());
}

void failForUnannounced()
{
    std::vector<std::string> texts;
    {
        const std::lock_guard lock(s_mutex);
        texts.swap(s_unannounced);
    }
    for (const std::string& text : texts)
        ADD_FAILURE() << "unannounced error: " << text;
}

/// Fails the test that let an error pass.
class Listener final : public ::testing::EmptyTestEventListener {
    // Again for each test: the one before may have tried handlers of its own.
    void OnTestStart(const ::testing::TestInfo&) override
    {
        SoError::setHandlerCallback(handleToolkitError);
    }

    void OnTestEnd(const ::testing::TestInfo&) override { failForUnannounced(); }

    // Errors outside of any case: static set-up and tear-down.
    void OnTestSuiteEnd(const ::testing::TestSuite&) override { failForUnannounced(); }
};

} // namespace

ErrorScope::ErrorScope()
{
    const std::lock_guard lock(s_mutex);
    m_outer = std::exchange(s_scope, this);
    const bool stopped = kalmyr::setContractsStop(false); // they are errors like others here
    if (!m_outer)
        s_contractsStop = stopped;
}

ErrorScope::~ErrorScope()
{
    {
        const std::lock_guard lock(s_mutex);
        s_scope = m_outer;
        if (!m_outer)
            kalmyr::setContractsStop(s_contractsStop);
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
    SoError::setHandlerCallback(handleToolkitError);
    ::testing::UnitTest::GetInstance()->listeners().Append(new Listener);
}

} // namespace support
