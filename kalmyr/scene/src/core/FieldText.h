#pragma once

#include <kalmyr/core/SoFieldIO.h>

#include <functional>
#include <string>
#include <string_view>

namespace kalmyr::detail {

/// Writes one value, or the values of a container. May be called several times.
using WriteValue = std::function<void(SoFieldWriter&)>;
/// Reads them; false after a fault. May be called again from the beginning.
using ReadValue = std::function<bool(SoFieldReader&)>;

/// The first fault of a text; line and column from 1.
struct TextFault {
    int line = 0;
    int column = 0;
    std::string message;
};

/// Values outside of scene files, as SoField::get() and set() have them. Values without nodes and
/// engines, nearly all of them, are written and read without further ado.
std::string writeValueText(const WriteValue& value);
bool readValueText(std::string_view text, const ReadValue& value, TextFault& fault);

/// Reads what may stand in front of values, between and behind them: connections among the nodes
/// that they hold, and such. For the readers of readValueText(); false after a fault.
bool readStatements(SoFieldReader& in);

/// The same for values with nodes or engines: the layer that reads and writes scenes gives them.
struct NodeTextFunctions {
    std::string (*write)(const WriteValue& value) = nullptr;
    bool (*read)(std::string_view text, const ReadValue& value, TextFault& fault) = nullptr;
    bool (*readStatements)(SoFieldReader& in) = nullptr; ///< by the readers of `read`
};
void setNodeTextFunctions(const NodeTextFunctions& functions);

} // namespace kalmyr::detail
