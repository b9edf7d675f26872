#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace support {

/// Collects the errors posted while it lives, which would fail the test otherwise:
/// toolkit errors and warnings, Qt warnings, failed connects.
/// Scopes nest; the innermost collects. A scope that collected nothing fails its
/// test, unless mayStayEmpty() was called. Errors may come from any thread; the
/// scope itself belongs to one.
class ErrorScope {
public:
    ErrorScope();
    ~ErrorScope();
    ErrorScope(const ErrorScope&) = delete;
    ErrorScope& operator=(const ErrorScope&) = delete;

    /// Number of errors collected so far.
    std::size_t count() const;

    /// Texts collected so far, in order.
    std::vector<std::string> texts() const;

    /// Whether any collected text contains `part`.
    bool contains(const std::string& part) const;

    /// Forgets what was collected; the scope may then end empty.
    void clear();

    /// Accepts that no error comes.
    void mayStayEmpty();

private:
    friend void report(const std::string& text);

    std::vector<std::string> m_texts;
    bool m_mayStayEmpty = false;
    ErrorScope* m_outer; // Not owned.
};

/// Announces errors: `auto errors = support::expectErrors();`
[[nodiscard]] ErrorScope expectErrors();

/// Hands an error to the innermost scope, or fails the running test when it ends.
void report(const std::string& text);

/// Adds the guard to the test program; called by the main functions.
void installErrorGuard();

} // namespace support
