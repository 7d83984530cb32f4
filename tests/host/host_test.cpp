#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/host/csv_material_access.h"
#include "quorel/host/csv_reader.h"
#include "quorel/host/problem_printer.h"

namespace quorel {
namespace host {
namespace {

std::vector<std::vector<std::string>> readAll(const std::string &text, std::vector<std::string> *errors = nullptr) {
  std::istringstream in(text);
  CsvReader reader(in);
  std::vector<std::vector<std::string>> rows;
  std::vector<std::string> row;
  while (reader.next(&row)) {
    rows.push_back(row);
    if (errors != nullptr) errors->push_back(std::to_string(reader.line()) + ":" + reader.error());
  }
  return rows;
}

TEST(CsvReaderTest, QuotesSeparatorsAndLines) {
  auto rows = readAll("a;b;c\r\n1;\"x;y\";\"say \"\"hi\"\"\"\n;;\n");
  ASSERT_EQ(3u, rows.size());
  EXPECT_EQ((std::vector<std::string>{"1", "x;y", "say \"hi\""}), rows[1]);
  EXPECT_EQ((std::vector<std::string>{"", "", ""}), rows[2]);
  auto commas = readAll("a,b\n1,2\n");
  EXPECT_EQ((std::vector<std::string>{"1", "2"}), commas[1]);
  std::vector<std::string> errors;
  auto multi = readAll("a;b\n\"line\nbreak\";2\n\"open;3\n", &errors);
  ASSERT_EQ(3u, multi.size());
  EXPECT_EQ("line\nbreak", multi[1][0]);
  EXPECT_EQ("2:", errors[1]);
  EXPECT_EQ("4:", errors[2].substr(0, 2));
  EXPECT_FALSE(errors[2].substr(2).empty());
  auto bytes = readAll("n\n\xFC\xDF\n");
  EXPECT_EQ("\xFC\xDF", bytes[1][0]);
}

TEST(ProblemPrinterTest, Windows1252BecomesEscapedUtf8) {
  EXPECT_EQ("\xC3\xBC\xC3\x9F\xE2\x82\xAC", toUtf8("\xFC\xDF\x80"));
  EXPECT_EQ("\"a\\\"b\\\\c\\n\\u0001\"", jsonString("a\"b\\c\n\x01"));
  EXPECT_EQ("null", jsonString(nullptr));
}

TEST(CsvMaterialAccessTest, ConditionsAreEvaluatedPerRow) {
  quorel::SimpleDataRecord row;
  std::string error;
  ASSERT_TRUE(fillRecord({"M.Nr", "M.Name", "M.Liste#"}, {"7", "", "3"}, &row, &error));
  EXPECT_EQ(nullptr, row.getValue("M.Name"));
  ASSERT_NE(nullptr, row.getValue("M.Nr"));
  EXPECT_EQ(3, row.getValue("M.Liste#")->asInteger());
  // A size is a whole number within bounds: the rules walk that many elements.
  for (const char *size : {"-1", "100001", "2000000000", "3x", " 3", "zwei"}) {
    EXPECT_FALSE(fillRecord({"M.Liste#"}, {size}, &row, &error)) << size;
    EXPECT_EQ(std::string("Arraygr\xF6\xDF" "e von M.Liste ist keine ganze Zahl von 0 bis 100000: ") + size, error);
  }
  EXPECT_TRUE(fillRecord({"M.Liste#"}, {"100000"}, &row, &error));
}

}  // namespace
}  // namespace host
}  // namespace quorel
