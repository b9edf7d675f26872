#include "PdfFile.h"

#include "../page/Deflate.h"

namespace kalmyr::detail {

PdfFile::PdfFile(ByteWriter& bytes, int minor) : m_bytes(bytes)
{
    // The second line tells programs that transfer the file that it is not text.
    m_bytes.write("%PDF-1." + std::to_string(minor) + "\n%\xe2\xe3\xcf\xd3\n");
}

int PdfFile::reserve()
{
    m_places.push_back(0);
    return static_cast<int>(m_places.size());
}

void PdfFile::begin(int number)
{
    m_places[number - 1] = m_bytes.position();
    m_bytes.write(std::to_string(number) + " 0 obj\n");
}

void PdfFile::object(int number, std::string_view body)
{
    begin(number);
    m_bytes.write(body);
    m_bytes.write("\nendobj\n");
}

int PdfFile::object(std::string_view body)
{
    const int number = reserve();
    object(number, body);
    return number;
}

void PdfFile::rawStream(int number, std::string_view dictionary, std::string_view data)
{
    begin(number);
    m_bytes.write("<< ");
    m_bytes.write(dictionary);
    m_bytes.write(" /Length " + std::to_string(data.size()) + " >>\nstream\n");
    m_bytes.write(data);
    m_bytes.write("\nendstream\nendobj\n");
}

void PdfFile::stream(int number, std::string_view dictionary, std::string_view data)
{
    const std::string packed = deflateBytes(data);
    if (packed.size() < data.size())
        packedStream(number, dictionary, packed);
    else
        rawStream(number, dictionary, data);
}

int PdfFile::stream(std::string_view dictionary, std::string_view data)
{
    const int number = reserve();
    stream(number, dictionary, data);
    return number;
}

void PdfFile::packedStream(int number, std::string_view dictionary, std::string_view packed)
{
    rawStream(number, std::string(dictionary) + " /Filter /FlateDecode", packed);
}

void PdfFile::finish(int catalog, int info, std::string_view id)
{
    const std::size_t table = m_bytes.position();
    const std::string size = std::to_string(m_places.size() + 1);
    m_bytes.write("xref\n0 " + size + "\n0000000000 65535 f \n");
    for (const std::size_t place : m_places) {
        const std::string digits = std::to_string(place);
        m_bytes.write(std::string(10 - digits.size(), '0') + digits + " 00000 n \n");
    }
    m_bytes.write("trailer\n<< /Size " + size + " /Root " + std::to_string(catalog) + " 0 R /Info "
                  + std::to_string(info) + " 0 R\n/ID [<" + std::string(id) + "> <"
                  + std::string(id) + ">] >>\nstartxref\n" + std::to_string(table) + "\n%%EOF\n");
}

} // namespace kalmyr::detail
