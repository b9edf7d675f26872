#include <kalmyr/core/SoFieldIO.h>

#include <kalmyr/core/SoNode.h>

bool SoFieldReader::readNode(SoNode*& node)
{
    node = nullptr;
    return text.acceptWord("NULL") || text.fail("expected NULL");
}

void SoFieldWriter::writeNode(const SoNode* node)
{
    if (!node) {
        text += "NULL";
    } else if (node->getName().isEmpty()) {
        text += '<';
        text += node->getTypeId().getName().view();
        text += '>';
    } else {
        text += node->getName().view();
    }
}
