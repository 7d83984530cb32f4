#include "quorel/host/csv_parts.h"

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/host/csv_reader.h"
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

  // Whatever the size of the blocks, the parts hold the rows of the whole
  // file, each once, in order, with the numbers and lines they have there.
  // The number of parts for each block size from 1 byte up to every.
  std::vector<std::size_t> expectPartsReadAsWhole(const std::string &text, std::int64_t every = 64) {
    write(text);
    std::vector<std::string> whole = rowsOf(CsvPart());
    std::vector<std::size_t> counts;
    for (std::int64_t block = 1; block <= every; ++block) {
      std::vector<CsvPart> parts = split(block);
      std::vector<std::string> joined;
      for (const CsvPart &part : parts) {
        for (const std::string &row : rowsOf(part)) joined.push_back(row);
      }
      EXPECT_EQ(whole, joined) << "blocks of " << block << " bytes, " << parts.size() << " parts";
      counts.push_back(parts.size());
    }
    return counts;
  }

  // CTest runs the tests of this fixture as processes of their own at once:
  // each writes a file of its own.
  std::string path_ = ::testing::TempDir() + "quorel_csv_parts_" +
                      ::testing::UnitTest::GetInstance()->current_test_info()->name() + "_" +
                      std::to_string(getpid()) + ".csv";
};

// Line ends of all three kinds (one "\r\n" split over a block's edge), blank
// lines, a byte-order mark, UTF-8, rows of the wrong width and a last line
// without an end.
TEST_F(CsvPartsTest, PartsTogetherReadAsTheWholeFile) {
  std::string text = "\xEF\xBB\xBFName;Ort\na;1\r\nb;2\rc;3\n\n\r\nd;4;5\n\xC3\xBC;6\r\r\ne\nf;7";
  write(text);
  std::vector<std::string> whole = rowsOf(CsvPart(), FileEncoding::kUtf8);
  ASSERT_EQ(7u, whole.size());
  EXPECT_EQ("5@8[\xFC][6]", whole[4]);
  EXPECT_EQ("7@11[f][7]", whole[6]);
  std::vector<std::size_t> counts = expectPartsReadAsWhole(text);
  // The last row begins at byte 43: a larger block leaves nothing to cut.
  for (std::size_t block = 1; block <= counts.size(); ++block) EXPECT_EQ(block <= 43, counts[block - 1] > 1) << block;
  write("Name;Ort\na;1\nb;2\n");
  EXPECT_TRUE(split(1000)[0].whole());
}

// Parts begin where rows begin, whatever quotes say about line ends: quoted
// cells over lines (a quoted header among them, separators and "\r\n" in
// them, doubled quotes), a quote within a cell, which opens nothing, and
// quoted cells that never close, whose lines are read again as rows of
// their own: one before the end of the file, one beyond CsvReader's limit
// of lines.
TEST_F(CsvPartsTest, QuotedCellsOverLinesAreNeverCut) {
  std::vector<std::size_t> counts =
      expectPartsReadAsWhole("\"Na\nme\";Ort\na;\"1\r\n2;\"\"x\"\"\"\nb;24\"\nc;\"\"\r\"d\";\"3\"\n\"e\n;4\n\"\"\"\n");
  EXPECT_GT(counts[0], 4u);
  expectPartsReadAsWhole("Name;Ort\na;1\nb;\"offen\nc;2\n\nd;3\"\"\ne;4");
  ASSERT_EQ(5u, rowsOf(CsvPart()).size());
  EXPECT_EQ("2@3[b]a quoted cell begins on this line and is not closed before the end of the file",
            rowsOf(CsvPart())[1]);
  std::string beyond = "Name;Ort\na;\"offen\n";
  for (int i = 0; i < CsvReader::kMaxQuotedLines + 5; ++i) beyond += "z;" + std::to_string(i) + "\n";
  beyond += "y;\"zu\"\n";
  write(beyond);
  EXPECT_EQ(static_cast<std::size_t>(CsvReader::kMaxQuotedLines + 7), rowsOf(CsvPart()).size());
  for (std::int64_t block : {7, 500, 4000}) {
    std::vector<std::string> joined;
    for (const CsvPart &part : split(block)) {
      for (const std::string &row : rowsOf(part)) joined.push_back(row);
    }
    EXPECT_EQ(rowsOf(CsvPart()), joined) << block;
  }
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
