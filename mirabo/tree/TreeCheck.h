#pragma once

#include <QString>

class SoMiraboTreeView;

namespace mirabo {

/// Compares every row of a tree with the graph: each occurrence once and in order, flags, numbers,
/// and the index from nodes to rows. Empty when all is well, else what is wrong and where.
QString checkTree(const SoMiraboTreeView& view);

} // namespace mirabo
