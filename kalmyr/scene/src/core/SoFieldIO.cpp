#include <kalmyr/core/SoFieldIO.h>

#include <kalmyr/core/SoEngine.h>
#include <kalmyr/core/SoNode.h>

bool SoFieldReader::readNode(SoNode*& node)
{
    node = nullptr;
    return text.acceptWord("NULL") || text.fail("expected NULL");
}

bool SoFieldReader::readEngine(SoEngine*& engine)
{
    engine = nullptr;
    return text.acceptWord("NULL") || text.fail("expected NULL");
}

bool SoFieldReader::leaveOut(std::size_t at, const SbString& why)
{
    return text.failAt(at, why.getString());
}

namespace {

void writeReference(std::string& text, const SoBase* base)
{
    if (!base) {
        text += "NULL";
    } else if (base->getName().isEmpty()) {
        text += '<';
        text += base->getTypeId().getName().view();
        text += '>';
    } else {
        text += base->getName().view();
    }
}

} // namespace

void SoFieldWriter::writeNode(const SoNode* node)
{
    writeReference(text, node);
}

void SoFieldWriter::writeEngine(const SoEngine* engine)
{
    writeReference(text, engine);
}
