#pragma once

namespace kalmyr::detail {

/// The outcome of reading something that may, or may not, stand next in a text.
enum class Parsed {
    No,    ///< something else stands there
    Yes,   ///< it was read
    Fault, ///< it stands there, with a fault that the tokenizer keeps
};

inline Parsed parsedIf(bool ok)
{
    return ok ? Parsed::Yes : Parsed::Fault;
}

} // namespace kalmyr::detail
