#include <kalmyr/base/SoModule.h>

namespace {

#if defined(__clang__)
constexpr char kCompiler[] = "clang " __clang_version__;
#elif defined(__GNUC__)
constexpr char kCompiler[] = "gcc " __VERSION__;
#elif defined(_MSC_VER)
constexpr char kCompiler[] = "msvc";
#else
constexpr char kCompiler[] = "unknown";
#endif

constexpr char kName[] = "Mirabo.dll"; // the same on every platform
constexpr char kVersion[] = "9.9.39.0";

/// The toolkit knows the tool from the moment the library is loaded.
struct Registration {
    Registration() { SoModule::add({kName, kVersion, kCompiler, "64 bits"}); }
    ~Registration() { SoModule::remove(kName); }
};

const Registration s_registration;

} // namespace
