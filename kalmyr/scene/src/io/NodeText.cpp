#include "NodeText.h"

#include "NodeReader.h"

#include <kalmyr/io/SoInput.h>
#include <kalmyr/io/SoOutput.h>

namespace kalmyr::detail {

bool readNodeText(std::string_view text, const ReadValue& read, TextFault& fault)
{
    // With a header of its own the first line of the text cannot be taken for one.
    std::string all(SoOutput::getDefaultASCIIHeader().view());
    all += '\n';
    all += text;
    SoInput in;
    if (!in.setBuffer(all.data(), all.size())) {
        fault = {1, 1, "expected a text that fits into memory"};
        return false;
    }
    NodeReader reader(in, kKalmyrDialect);
    if (read(reader))
        return true;
    fault = {reader.text.getErrorLine() - 1, reader.text.getErrorColumn(), reader.text.getError()};
    return false;
}

void installNodeText()
{
    setNodeTextFunctions({writeNodeText, readNodeText, [](SoFieldReader& in) {
                              return static_cast<NodeReader&>(in).readStatements();
                          }});
}

} // namespace kalmyr::detail
