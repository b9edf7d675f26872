#pragma once

#include "../ByteWriter.h"

#include <string>
#include <string_view>
#include <vector>

namespace kalmyr::detail {

/// The objects of a PDF file, the table of their places, and its end.
class PdfFile {
public:
    /// `minor` of version 1.
    PdfFile(ByteWriter& bytes, int minor);

    /// The number of an object that is written later.
    int reserve();
    void object(int number, std::string_view body);
    int object(std::string_view body);
    /// With the entries of its dictionary but /Length and /Filter; packed where that is shorter.
    void stream(int number, std::string_view dictionary, std::string_view data);
    int stream(std::string_view dictionary, std::string_view data);
    /// One that is packed already.
    void packedStream(int number, std::string_view dictionary, std::string_view packed);
    /// Every reserved object has been written.
    void finish(int catalog, int info, std::string_view id);

private:
    void begin(int number);
    void rawStream(int number, std::string_view dictionary, std::string_view data);

    ByteWriter& m_bytes;
    std::vector<std::size_t> m_places; ///< of object 1 and up
};

} // namespace kalmyr::detail
