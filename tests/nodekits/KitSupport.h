#pragma once

#include <kalmyr/base/SoRef.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodekits/SoBaseKit.h>
#include <kalmyr/nodekits/SoNodeKitListPart.h>
#include <kalmyr/nodes/SoSeparator.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace kittest {

class KitTest : public ::testing::Test {
protected:
    void SetUp() override { SoDB::init(); }
};

inline std::string textOf(SoNode* node)
{
    SoOutput out;
    out.setBuffer();
    SoWriteAction action(&out);
    action.apply(node);
    void* bytes = nullptr;
    std::size_t size = 0;
    out.getBuffer(bytes, size);
    return {static_cast<const char*>(bytes), size};
}

inline SoRef<SoNode> read(const std::string& text)
{
    SoInput in;
    in.setBuffer(text.data(), text.size());
    SoNode* node = nullptr;
    SoDB::read(&in, node);
    return node;
}

template <class Node>
Node* as(SoNode* node)
{
    return node && node->isOfType(Node::getClassTypeId()) ? static_cast<Node*>(node) : nullptr;
}

inline SoBaseKit* asKit(SoNode* node)
{
    return as<SoBaseKit>(node);
}

/// Types of everything that the kit shows to actions, from left to right with depth.
inline std::string shapeOf(const SoNode* node, int depth = 0)
{
    std::string text(static_cast<std::size_t>(depth), '.');
    text += node->getTypeId().getName().getString();
    const SoChildList* children = node->getInternalChildren();
    for (int i = 0; children && i < children->getLength(); ++i)
        text += ' ' + shapeOf((*children)[i], depth + 1);
    return text;
}

/// What must hold after every edit: public and private parts stand in the kit's graph once, below
/// the part that the catalog says, in the catalog's order, and know their names.
inline void checkInvariants(SoBaseKit* kit)
{
    const SoNodekitCatalog* catalog = kit->getNodekitCatalog();
    for (int parent = 0; parent < catalog->getNumEntries(); ++parent) {
        const SoNode* above =
            parent == 0
                ? kit
                : static_cast<SoSFNode*>(kit->getField(catalog->getName(parent)))->getValue();
        int last = -1;
        for (const int part : catalog->getPartsBelow(parent)) {
            SoNode* node =
                static_cast<SoSFNode*>(kit->getField(catalog->getName(part)))->getValue();
            if (!node)
                continue;
            ASSERT_TRUE(above) << catalog->getName(part).getString() << " hangs in the air";
            const int at = above->getInternalChildren()->find(node);
            EXPECT_GT(at, last) << catalog->getName(part).getString();
            last = at;
            EXPECT_STREQ(kit->getPartString(node).getString(), catalog->getName(part).getString());
            EXPECT_TRUE(node->isOfType(catalog->getType(part)));
            auto* list = as<SoNodeKitListPart>(node);
            for (int i = 0; list && i < list->getNumChildren(); ++i)
                if (asKit(list->getChild(i)))
                    checkInvariants(asKit(list->getChild(i)));
        }
    }
}

} // namespace kittest
