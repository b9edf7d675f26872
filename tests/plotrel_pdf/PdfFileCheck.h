#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <string>

namespace support {

/// Holds the structure of a PDF file against the rules: the table of places, the objects, the
/// lengths of streams, and that everything referred to is there.
class PdfFileCheck {
public:
    explicit PdfFileCheck(const std::string& file) : m_file(file) { check(); }

    /// Returns the file without the contents of its streams.
    const std::string& text() const { return m_text; }
    bool has(const std::string& part) const { return m_text.find(part) != std::string::npos; }

private:
    void check()
    {
        ASSERT_EQ(m_file.substr(0, 7), "%PDF-1.");
        const std::size_t end = m_file.rfind("startxref\n");
        ASSERT_NE(end, std::string::npos);
        std::size_t at = std::strtoul(m_file.c_str() + end + 10, nullptr, 10);
        EXPECT_EQ(m_file.substr(end).substr(m_file.substr(end).size() - 6), "%%EOF\n");
        ASSERT_EQ(m_file.substr(at, 7), "xref\n0 ");
        const int size = std::atoi(m_file.c_str() + at + 7);
        EXPECT_GT(size, 4);
        at = m_file.find('\n', at + 5) + 1;
        EXPECT_EQ(m_file.substr(at, 20), "0000000000 65535 f \n");
        for (int number = 1; number < size; ++number) {
            at += 20;
            EXPECT_EQ(m_file.substr(at + 10, 10), " 00000 n \n");
            object(number, std::strtoul(m_file.c_str() + at, nullptr, 10));
        }
        const std::string trailer = m_file.substr(at + 20, end - at - 20);
        EXPECT_EQ(trailer.find("trailer\n<< /Size " + std::to_string(size) + " /Root "), 0U);
        m_text += trailer;
        checkReferences(size);
    }

    void object(int number, std::size_t at)
    {
        const std::string head = std::to_string(number) + " 0 obj\n";
        ASSERT_EQ(m_file.substr(at, head.size()), head);
        const std::size_t stream = m_file.find(">>\nstream\n", at);
        const std::size_t end = m_file.find("\nendobj\n", at);
        ASSERT_NE(end, std::string::npos);
        if (stream > end) {
            m_text += m_file.substr(at, end - at) + "\n";
            return;
        }
        const std::string dictionary = m_file.substr(at, stream - at);
        const std::size_t length = dictionary.rfind("/Length ");
        ASSERT_NE(length, std::string::npos) << dictionary;
        const std::size_t bytes = std::strtoul(dictionary.c_str() + length + 8, nullptr, 10);
        EXPECT_EQ(m_file.substr(stream + 10 + bytes, 18), "\nendstream\nendobj\n") << dictionary;
        m_text += dictionary + "\n";
    }

    void checkReferences(int size)
    {
        std::set<int> known;
        for (std::size_t at = 0; (at = m_text.find(" 0 R", at)) != std::string::npos; ++at) {
            std::size_t begin = at;
            while (begin > 0 && std::isdigit(static_cast<unsigned char>(m_text[begin - 1])))
                --begin;
            known.insert(std::atoi(m_text.c_str() + begin));
        }
        // Everything is used, and nothing else.
        EXPECT_EQ(int(known.size()), size - 1);
        EXPECT_EQ(*known.begin(), 1);
        EXPECT_EQ(*known.rbegin(), size - 1);
    }

    const std::string& m_file;
    std::string m_text;
};

} // namespace support
