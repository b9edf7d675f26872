#include "mirabo/plugins/defaults/TabText.h"

#include <gtest/gtest.h>

namespace {

using Rows = std::vector<QStringList>;

TEST(TabText, ReadsRowsAndCells)
{
    EXPECT_TRUE(readTabText("").empty());
    EXPECT_EQ(readTabText("1\t2\n3\t4"), (Rows{{"1", "2"}, {"3", "4"}}));
    EXPECT_EQ(readTabText("1\r\n2\r\n"), (Rows{{"1"}, {"2"}}));
    EXPECT_EQ(readTabText("1\r2\n\n3"), (Rows{{"1"}, {"2"}, {""}, {"3"}}));
    EXPECT_EQ(readTabText("\t\n"), (Rows{{"", ""}}));
}

TEST(TabText, ReadsCellsInQuotes)
{
    EXPECT_EQ(readTabText("\"a\tb\"\t\"c\nd\"\n\"say \"\"hi\"\"\""),
              (Rows{{"a\tb", "c\nd"}, {"say \"hi\""}}));
    EXPECT_EQ(readTabText("a\"b\t\"open\nend"), (Rows{{"a\"b", "open\nend"}}));
    EXPECT_EQ(readTabText("\"a\"b\t\"\""), (Rows{{"ab", ""}}));
}

TEST(TabText, ReadsWhatItWrites)
{
    const Rows rows{{"plain", "a\tb", "\"", ""}, {"two\nlines", "\r", "\"quoted\"", " x "}};
    QString text;
    for (const QStringList& row : rows) {
        for (int i = 0; i < row.size(); ++i)
            writeTabCell(text, row[i], i == 0);
        text += '\n';
    }
    EXPECT_EQ(readTabText(text), rows);
}

} // namespace
