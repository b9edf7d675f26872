#pragma once

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldConverter.h>

/// Holds the data that few fields have: listeners of their own and a connection.
struct SoField::Extra {
    SoAuditorList auditors;
    SoField* master = nullptr;                     // Not owned; it tells us when it dies.
    SoFieldConverter::Function* convert = nullptr; ///< null where the types are the same
};
