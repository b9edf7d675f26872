#include "CallStack.h"

#include <kalmyr/base/SoErrorStack.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#if defined(__GNUC__) && !defined(_WIN32)
#define KALMYR_HAVE_DLADDR
#include <cxxabi.h>
#include <dlfcn.h>
#endif
#if defined(KALMYR_HAVE_LIBBACKTRACE)
#include <backtrace.h>
#elif __has_include(<execinfo.h>)
#define KALMYR_HAVE_EXECINFO
#include <execinfo.h>
#endif

namespace kalmyr::detail {

namespace {

[[maybe_unused]] std::string readableName(const char* symbol)
{
#if defined(KALMYR_HAVE_DLADDR)
    int status = 0;
    char* text = abi::__cxa_demangle(symbol, nullptr, nullptr, &status);
    std::string name = status == 0 && text ? text : symbol;
    std::free(text);
    return name;
#else
    return symbol;
#endif
}

// The name of an exported function and the library of an address, as far as the dynamic linker
// knows them.
[[maybe_unused]] void askLinker(std::uintptr_t address, std::string& function, std::string& library)
{
#if defined(KALMYR_HAVE_DLADDR)
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void*>(address), &info)) {
        return;
    }
    if (function.empty() && info.dli_sname) {
        function = readableName(info.dli_sname);
    }
    library = info.dli_fname ? info.dli_fname : "";
#else
    (void)address;
    (void)function;
    (void)library;
#endif
}

// Collects the lines of the text. Frames are not counted off at the inner end, since the compiler
// may have merged some: everything up to the caller's return address is left out.
class [[maybe_unused]] Lines {
public:
    Lines(const void* caller, int skip)
        : m_caller(reinterpret_cast<std::uintptr_t>(caller)), m_skip(skip)
    {
    }

    // `address` may lie anywhere in the calling instruction or just behind it.
    bool wants(std::uintptr_t address)
    {
        m_found = m_found || address == m_caller || address + 1 == m_caller;
        return m_found && m_skip-- <= 0;
    }

    bool isFull() const { return m_count >= SoErrorStack::kMaxFrames; }

    void add(std::uintptr_t address, std::string function, const char* file, int line)
    {
        std::string place = file ? file : "";
        if (file) {
            place += ':' + std::to_string(line);
        } else {
            askLinker(address, function, place);
        }
        m_text += SbString::format("#%d ", m_count++);
        m_text += function.empty()
                      ? SbString::format("0x%llx", static_cast<unsigned long long>(address))
                      : function;
        m_text += place.empty() ? "\n" : " (" + place + ")\n";
    }

    const SbString& text() const { return m_text; }

private:
    std::uintptr_t m_caller;
    int m_skip;
    SbString m_text;
    int m_count = 0;
    bool m_found = false;
};

#if defined(KALMYR_HAVE_LIBBACKTRACE)

backtrace_state* state()
{
    // Never freed: the library offers no way, and it keeps the debug information that it has read.
    static backtrace_state* const s_state = backtrace_create_state(
        nullptr, 1, [](void*, const char*, int) {}, nullptr);
    return s_state;
}

void ignoreError(void*, const char*, int) {}

int addFrame(void* data, std::uintptr_t address, const char* file, int line, const char* function)
{
    auto& lines = *static_cast<Lines*>(data);
    // The largest address marks the end behind the outermost call.
    if (address == UINTPTR_MAX || !lines.wants(address)) {
        return 0;
    }
    std::string name = function ? readableName(function) : std::string();
    if (name.empty()) {
        const auto take = [](void* to, std::uintptr_t, const char* symbol, std::uintptr_t,
                             std::uintptr_t) {
            *static_cast<std::string*>(to) = symbol ? readableName(symbol) : std::string();
        };
        backtrace_syminfo(state(), address, take, ignoreError, &name);
    }
    lines.add(address, std::move(name), file, line);
    return lines.isFull() ? 1 : 0;
}

#endif

} // namespace

SbString callStack(const void* caller, int skip)
{
#if defined(KALMYR_HAVE_LIBBACKTRACE)
    Lines lines(caller, skip);
    if (state()) {
        backtrace_full(state(), 0, addFrame, ignoreError, &lines);
    }
    return lines.text();
#elif defined(KALMYR_HAVE_EXECINFO)
    Lines lines(caller, skip);
    void* addresses[SoErrorStack::kMaxFrames];
    const int count = backtrace(addresses, SoErrorStack::kMaxFrames);
    for (int i = 0; i < count; ++i) {
        const auto address = reinterpret_cast<std::uintptr_t>(addresses[i]);
        if (lines.wants(address)) {
            lines.add(address, {}, nullptr, 0);
        }
    }
    return lines.text();
#else
    (void)caller;
    (void)skip;
    return {};
#endif
}

} // namespace kalmyr::detail
