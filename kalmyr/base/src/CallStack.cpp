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

#if defined(__GNUC__)
#define KALMYR_NOINLINE __attribute__((noinline))
#else
#define KALMYR_NOINLINE
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

// The name of an exported function and the library of an address, as far as the dynamic linker knows them.
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

// Collects the lines of the text.
class [[maybe_unused]] Lines {
public:
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
        m_text += function.empty() ? SbString::format("0x%llx", static_cast<unsigned long long>(address)) : function;
        m_text += place.empty() ? "\n" : " (" + place + ")\n";
    }

    const SbString& text() const { return m_text; }

private:
    SbString m_text;
    int m_count = 0;
};

#if defined(KALMYR_HAVE_LIBBACKTRACE)

backtrace_state* state()
{
    // Never freed: the library offers no way, and it keeps the debug information that it has read.
    static backtrace_state* const s_state =
        backtrace_create_state(nullptr, 1, [](void*, const char*, int) {}, nullptr);
    return s_state;
}

void ignoreError(void*, const char*, int)
{
}

int addFrame(void* data, std::uintptr_t address, const char* file, int line, const char* function)
{
    auto& lines = *static_cast<Lines*>(data);
    if (address == UINTPTR_MAX) {
        // The mark behind the outermost call.
        return 0;
    }
    std::string name = function ? readableName(function) : std::string();
    if (name.empty()) {
        const auto take = [](void* to, std::uintptr_t, const char* symbol, std::uintptr_t, std::uintptr_t) {
            *static_cast<std::string*>(to) = symbol ? readableName(symbol) : std::string();
        };
        backtrace_syminfo(state(), address, take, ignoreError, &name);
    }
    lines.add(address, std::move(name), file, line);
    return lines.isFull() ? 1 : 0;
}

#endif

} // namespace

KALMYR_NOINLINE SbString callStack(int skip)
{
#if defined(KALMYR_HAVE_LIBBACKTRACE)
    Lines lines;
    if (state()) {
        backtrace_full(state(), skip + 1, addFrame, ignoreError, &lines);
    }
    return lines.text();
#elif defined(KALMYR_HAVE_EXECINFO)
    Lines lines;
    void* addresses[SoErrorStack::kMaxFrames];
    const int count = backtrace(addresses, SoErrorStack::kMaxFrames);
    for (int i = skip + 1; i < count; ++i) {
        lines.add(reinterpret_cast<std::uintptr_t>(addresses[i]), {}, nullptr, 0);
    }
    return lines.text();
#else
    (void)skip;
    return {};
#endif
}

} // namespace kalmyr::detail
