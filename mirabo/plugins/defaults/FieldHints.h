#pragma once

#include <QString>

/// Documentation of one field, from the class that declares it.
struct FieldHint {
    const char* containerType;
    const char* fieldName;
    const char* text;
};

/// Sorted by type and name; made from the toolkit's headers by cmake/field_hints.py.
extern const FieldHint kFieldHints[];
extern const int kFieldHintCount;

/// Unit, range and meaning of a field of a container type or of one of its ancestors, for tool
/// tips; empty where nothing is said.
QString fieldHint(const QString& containerType, const QString& fieldName);
