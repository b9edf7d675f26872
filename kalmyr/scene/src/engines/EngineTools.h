#pragma once

#include <kalmyr/base/SbName.h>
#include <kalmyr/engines/SoGlobalField.h>
#include <kalmyr/fields/SoValueFields.h>

#include <algorithm>
#include <initializer_list>
#include <span>

namespace kalmyr::detail {

/// Lets a time input follow the global field, which is how every engine of time begins.
inline void followRealTime(SoSFTime& timeIn)
{
    if (SoField* realTime = SoGlobalField::find(SbName("realTime")))
        timeIn.connectFrom(realTime);
    timeIn.setDefault(true);
}

/// Value `i` of an input; the last one serves all further ones.
template <class Field>
typename Field::Value valueAt(const Field& field, int i)
{
    const auto all = field.values();
    if (all.empty())
        return {};
    return all[std::min(static_cast<std::size_t>(i), all.size() - 1)];
}

/// How many values the longest input has; none when one of them has none.
template <class... Fields>
int longest(const Fields&... fields)
{
    const std::initializer_list<int> counts{fields.getNum()...};
    return std::min(counts) == 0 ? 0 : std::max(counts);
}

/// Sets `num` values of an output by a function of the index.
template <class Field, class Function>
void fill(Field& output, int num, Function function)
{
    auto* to = output.setNumRaw(num);
    for (int i = 0; i < num; ++i)
        to[i] = function(i);
    output.finishEditing();
}

} // namespace kalmyr::detail
