#include <kalmyr/base/SoModule.h>

#include <algorithm>

namespace {

// Never destroyed: libraries describe themselves before, and leave after, this one's statics.
std::vector<SoModule::Description>& modules()
{
    static auto* const all = new std::vector<SoModule::Description>;
    return *all;
}

auto position(const SbString& name)
{
    return std::find_if(modules().begin(), modules().end(),
                        [&name](const SoModule::Description& m) { return m.name == name; });
}

} // namespace

void SoModule::add(const Description& description)
{
    const auto at = position(description.name);
    if (at == modules().end())
        modules().push_back(description);
    else
        *at = description;
}

void SoModule::remove(const SbString& name)
{
    const auto at = position(name);
    if (at != modules().end())
        modules().erase(at);
}

const std::vector<SoModule::Description>& SoModule::getAll()
{
    return modules();
}

const SoModule::Description* SoModule::find(const SbString& name)
{
    const auto at = position(name);
    return at == modules().end() ? nullptr : &*at;
}
