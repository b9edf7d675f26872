#pragma once

#include "mirabo/tree/SoTreeViewItem.h"

namespace mirabo {

/// All rows of the scene tree are of this class.
inline SoTreeViewItem* asItem(QTreeWidgetItem* item)
{
    return static_cast<SoTreeViewItem*>(item);
}

} // namespace mirabo
