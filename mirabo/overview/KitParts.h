#pragma once

#include <QString>

class SbName;
class SoNode;

/// Queries of the overview about node kits.
namespace mirabo {

enum class PartKind { None, Public, Private };

/// Whether a field of that name is a part in the catalog of the node, which need not be a kit.
PartKind partKind(const SoNode* node, const SbName& fieldName);

/// The name under which a kit has the node as a part; empty when it has not, or is no kit, or null.
QString partName(const SoNode* kit, const SoNode* node);

} // namespace mirabo
