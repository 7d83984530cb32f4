#include "quorel/host/csv_parts.h"

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/host/csv_row_source.h"
#include "host/vector_rows.h"

namespace quorel {
namespace host {
namespace {

class CsvPartsTest : public ::testing::Test {
 protected:
  void TearDown() override { std::remove(path_.c_str()); }

  void write(const std::string &text) { std::ofstream(path_, std::ios::binary) << text; }

  // The rows of the part, as rowsRead gives them.
  std::vector<std::string> rowsOf(const CsvPart &part, FileEncoding encoding = FileEncoding::kWindows1252) {
    std::string message;
    auto source = CsvRowSource::open(path_, part, &message, encoding);
    EXPECT_NE(nullptr, source) << message;
    return source != nullptr ? rowsRead(source.get()) : std::vector<std::string>();
  }

  std::vector<CsvPart> split(std::int64_t block) {
    std::vector<CsvPart> parts;
    std::string message;
    EXPECT_TRUE(splitCsvFile(path_, block, &parts, &message)) << message;
    return parts;
  }

  std::string path_ = ::testing::TempDir() + "quorel_csv_parts.csv";
};

// Whatever the size of the blocks, the parts hold the rows of the whole
// file, each once, in order, with the numbers and lines they have there:
// line ends of all three kinds (one "\r\n" split over a block's edge),
// blank lines, a byte-order mark, UTF-8, rows of the wrong width and a last
// line without an end.
TEST_F(CsvPartsTest, PartsTogetherReadAsTheWholeFile) {
  write("\xEF\xBB\xBFName;Ort\na;1\r\nb;2\rc;3\n\n\r\nd;4;5\n\xC3\xBC;6\r\r\ne\nf;7");
  std::vector<std::string> whole = rowsOf(CsvPart(), FileEncoding::kUtf8);
  ASSERT_EQ(7u, whole.size());
  EXPECT_EQ("1@2[a][1]", whole[0]);
  EXPECT_EQ("5@8[\xFC][6]", whole[4]);
  EXPECT_EQ("7@11[f][7]", whole[6]);
  for (std::int64_t block = 1; block <= 64; ++block) {
    std::vector<CsvPart> parts = split(block);
    std::vector<std::string> joined;
    for (const CsvPart &part : parts) {
      for (const std::string &row : rowsOf(part)) joined.push_back(row);
    }
    EXPECT_EQ(whole, joined) << "blocks of " << block << " bytes, " << parts.size() << " parts";
    // The last line begins at byte 43: a block beyond it leaves nothing to cut.
    EXPECT_EQ(block <= 43, parts.size() > 1) << block;
  }
}

// A quote may hide a line end within a cell, so a file that holds one is
// read whole; so is a file within one block.
TEST_F(CsvPartsTest, AFileWithAQuoteOrWithinOneBlockIsOnePart) {
  write("Name;Ort\na;1\nb;2\nc;\"3\n4\"\nd;5\n");
  for (std::int64_t block : {1, 8, 1000}) {
    std::vector<CsvPart> parts = split(block);
    ASSERT_EQ(1u, parts.size());
    EXPECT_TRUE(parts[0].whole());
  }
  write("Name;Ort\na;1\nb;2\n");
  EXPECT_TRUE(split(1000)[0].whole());
  EXPECT_EQ(3u, split(4).size());
}

// A part of a file that has changed since it was cut would read other rows
// under the old numbers: it is refused.
TEST_F(CsvPartsTest, APartOfAChangedFileIsRefused) {
  write("Name\na\nb\nc\n");
  std::vector<CsvPart> parts = split(4);
  ASSERT_EQ(3u, parts.size());
  write("Name\na\nb\nc\nd\n");
  std::string message;
  EXPECT_EQ(nullptr, CsvRowSource::open(path_, parts[1], &message));
  EXPECT_EQ(path_ + " has changed since it was cut into parts (11 bytes then, 13 bytes now)", message);
  // A file that is not there is one part, which its reader names.
  std::vector<CsvPart> missing;
  EXPECT_TRUE(splitCsvFile(path_ + ".missing", 4, &missing, &message));
  EXPECT_TRUE(missing.at(0).whole());
}

}  // namespace
}  // namespace host
}  // namespace quorel
