#pragma once

#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/tree/TreeCheck.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoGroup.h>

#include <QCoreApplication>

#include <gtest/gtest.h>

/// A node that holds others by its fields.
class FieldHolder : public SoNode {
    SO_NODE_HEADER(FieldHolder)

public:
    FieldHolder();
    static void initClass();

    SoSFNode one;
    SoMFNode many;
    SoSFFloat number;

protected:
    ~FieldHolder() override;
};

/// A view, and a group as its root.
class TreeTest : public ::testing::Test {
protected:
    TreeTest();
    ~TreeTest() override;

    /// Row of a node, the first one.
    SoTreeViewItem* row(const SoNode* node) const
    {
        const auto items = view.occurrencesOf(node);
        return items.empty() ? nullptr : items.front();
    }
    static SoTreeViewItem* asRow(QTreeWidgetItem* item)
    {
        return static_cast<SoTreeViewItem*>(item);
    }
    int rowsOf(const SoNode* node) const { return static_cast<int>(view.itemsOf(node).size()); }
    std::string check() const { return mirabo::checkTree(view).toStdString(); }
    static void pass() { QCoreApplication::processEvents(); }

    SoRef<SoGroup> root;
    SoMiraboTreeView view;
};
