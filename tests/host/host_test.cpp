#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <quorel/quorel.h>

#include "quorel/host/csv_reader.h"
#include "quorel/host/csv_row_source.h"
#include "quorel/host/encoding.h"
#include "quorel/host/problem.h"
#include "quorel/host/problem_format.h"
#include "quorel/host/record_layout.h"
#include "quorel/host/row_record.h"
#include "quorel/host/row_source.h"
#include "quorel/host/summary.h"
#include "quorel/host/table_material_access.h"
#include "host/vector_rows.h"
#include "model/test_tree.h"
#include "test_support.h"

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

TEST(CsvReaderTest, EveryByteBesideSeparatorsAtEveryPlaceOfAWord) {
  for (char separator : {';', ','}) {
    for (int byte = 1; byte < 256; ++byte) {
      char c = static_cast<char>(byte);
      if (c == '\n' || c == '\r' || c == '"' || c == separator) continue;
      for (std::size_t before = 0; before < 8; ++before) {
        std::vector<std::string> row = {std::string(before, 'x'), "", std::string(1, c), std::string(2, c), "", "y" + std::string(1, c)};
        std::string line = row[0];
        for (std::size_t k = 1; k < row.size(); ++k) line += separator + row[k];
        auto rows = readAll("h" + std::string(1, separator) + "h\n" + line + "\n");
        ASSERT_EQ(2u, rows.size());
        ASSERT_EQ(row, rows[1]) << byte << " after " << before;
      }
    }
  }
}

TEST(CsvReaderTest, LinesAcrossTheReadChunksOfTheInput) {
  // Rows of growing length, so that line ends of every kind fall on and
  // around the edges of the chunks the reader takes in (64 KiB), one row
  // longer than a chunk, and a quoted cell that spans lines.
  std::vector<std::vector<std::string>> expected = {{"a", "b"}};
  for (int i = 0; i < 2000; ++i) expected.push_back({std::string(static_cast<std::size_t>(i % 97), 'x'), std::to_string(i)});
  expected.push_back({std::string(70000, 'y'), "lang"});
  expected.push_back({"z", "ende"});
  for (const char *end : {"\n", "\r\n", "\r"}) {
    for (std::size_t shift = 0; shift < 100; ++shift) {
      std::string text = std::string(shift, 'p');
      for (std::size_t i = 0; i < expected.size(); ++i) {
        text += (i == 1 ? "\"q" + std::string(end) + "q\"" : "") + expected[i][0] + ";" + expected[i][1] + end;
      }
      std::vector<std::vector<std::string>> want = expected;
      want[0][0] = std::string(shift, 'p') + "a";
      want[1][0] = "q\nq" + want[1][0];
      EXPECT_EQ(want, readAll(text)) << "end " << (end[0] == '\r' ? end[1] == '\n' ? "CRLF" : "CR" : "LF") << " shift " << shift;
      text.resize(text.size() - std::strlen(end));  // the last line without its end
      EXPECT_EQ(want, readAll(text));
    }
  }
}

// A line that no table's row would be (a file without line ends, binary
// data) ends the rows as a read failure does, before it is held whole.
TEST(CsvReaderTest, ALineBeyondTheBoundFailsTheRead) {
  for (std::size_t length : {CsvReader::kMaxLineBytes, CsvReader::kMaxLineBytes + 1}) {
    std::istringstream in("a;b\n1;2\n" + std::string(length, 'x') + "\n3;4\n");
    CsvReader reader(in);
    std::vector<std::string> cells;
    ASSERT_TRUE(reader.next(&cells) && reader.next(&cells));
    if (length == CsvReader::kMaxLineBytes) {
      EXPECT_TRUE(reader.next(&cells) && reader.next(&cells));
      EXPECT_EQ((std::vector<std::string>{"3", "4"}), cells);
      continue;
    }
    EXPECT_FALSE(reader.next(&cells));
    EXPECT_TRUE(reader.failed());
    EXPECT_EQ("line 3 is longer than 64 MB, which no row of a table is", reader.failure());
    EXPECT_FALSE(reader.next(&cells));
  }
}

// Blank lines are skipped and counted nowhere; a line "" is a row of one
// empty cell, which a one-column file checks and a wider one reports.
TEST(CsvRowSourceTest, ABlankLineIsSkippedAndAnEmptyQuotedCellIsARow) {
  auto rowsOf = [](const std::string &text) {
    std::string path = ::testing::TempDir() + "quorel_blank_lines.csv";
    std::ofstream(path, std::ios::binary) << text;
    std::string message;
    auto source = CsvRowSource::open(path, &message);
    EXPECT_NE(nullptr, source) << message;
    std::vector<std::string> seen = source != nullptr ? rowsRead(source.get()) : std::vector<std::string>();
    std::remove(path.c_str());
    return seen;
  };
  EXPECT_EQ((std::vector<std::string>{"1@2[a]", "2@4[]", "3@6[b]"}), rowsOf("Name\na\n\n\"\"\n\r\nb\n"));
  EXPECT_EQ((std::vector<std::string>{"1@3[]the row has 1 cell, the header 2"}), rowsOf("a;b\n\n\"\"\n"));
}

TEST(RecordLayoutTest, CellsSizesAndEmptyFields) {
  quorel::SimpleDataRecord row;
  std::string error;
  ASSERT_TRUE(RecordLayout({"M.Nr", "M.Name", "M.Liste#"}).fill({"7", "", "3"}, &row, &error));
  EXPECT_EQ(nullptr, row.getValue("M.Name"));
  ASSERT_NE(nullptr, row.getValue("M.Nr"));
  EXPECT_EQ(3, row.getValue("M.Liste#")->asInteger());
  // A size is a whole number within bounds: the rules walk that many elements.
  for (const char *size : {"-1", "100001", "2000000000", "3x", " 3", "zwei"}) {
    EXPECT_FALSE(RecordLayout({"M.Liste#"}).fill({size}, &row, &error)) << size;
    EXPECT_EQ(std::string("the size M.Liste# is not a whole number from 0 to 100000: ") + size, error);
  }
  EXPECT_TRUE(RecordLayout({"M.Liste#"}).fill({"100000"}, &row, &error));
}

TEST(RecordLayoutTest, ANulByteAnywhereInACellFailsTheRow) {
  RecordLayout layout({"M.Nr", "M.Name"});
  quorel::SimpleDataRecord record;
  std::string error;
  for (std::size_t length = 1; length <= 17; ++length) {
    ASSERT_TRUE(layout.fill({"1", std::string(length, 'x')}, &record, &error)) << length;
    for (std::size_t at = 0; at < length; ++at) {
      std::string cell(length, 'x');
      cell[at] = '\0';
      ASSERT_FALSE(layout.fill({"1", cell}, &record, &error)) << length << " " << at;
      EXPECT_EQ("column M.Name: the cell holds a NUL byte", error);
    }
  }
}

// The reader of a CSV file looks for NUL bytes as it splits a line; a row
// it vouches for fills as the cells checked one by one would.
TEST(RecordLayoutTest, ARowReadFromAFileFillsAsItsCellsDo) {
  std::string text = "M.Nr;M.Name\n";
  for (std::size_t length = 1; length <= 17; ++length) {
    for (std::size_t at = 0; at <= length; ++at) {
      std::string cell(length, 'x');
      if (at < length) cell[at] = '\0';
      text += "1;" + cell + "\n\"2\";" + cell + "\n" + cell + ";3\n";
    }
  }
  std::string path = ::testing::TempDir() + "quorel_nul_cells.csv";
  std::ofstream(path, std::ios::binary) << text;
  std::string message;
  auto source = CsvRowSource::open(path, &message);
  ASSERT_NE(nullptr, source) << message;
  RecordLayout layout(source->columns());
  Row row;
  int rows = 0, vouched = 0;
  while (source->next(&row)) {
    quorel::SimpleDataRecord read, checked;
    std::string error, expected;
    bool filled = layout.fill(row, &read, &error);
    ASSERT_EQ(layout.fill(row.cells, &checked, &expected), filled) << row.place.line;
    EXPECT_EQ(expected, error);
    ++rows;
    vouched += row.nulFree ? 1 : 0;
  }
  std::remove(path.c_str());
  EXPECT_EQ(3 * (17 * 18 / 2 + 17), rows);
  EXPECT_GT(vouched, 0);
}

TEST(RecordLayoutTest, OneRecordFilledRowAfterRowHoldsTheLastRowAlone) {
  RecordLayout layout({"M.Nr", "M.Name", "M.Liste#", "M.Nr"});
  quorel::SimpleDataRecord record;
  std::string error;
  ASSERT_TRUE(layout.fill({"7", "Anna", "3", ""}, &record, &error));
  EXPECT_STREQ("7", record.getValue("M.Nr")->asString());  // a later empty cell of a name keeps the value
  ASSERT_TRUE(layout.fill({"", "", "", "8"}, &record, &error));
  EXPECT_EQ(nullptr, record.getValue("M.Name"));
  EXPECT_EQ(nullptr, record.getValue("M.Liste#"));
  EXPECT_STREQ("8", record.getValue("M.Nr")->asString());
  // A row that fails leaves the record for the next row to fill in full;
  // cells a short row lacks are empty.
  EXPECT_FALSE(layout.fill({"1", "Bert", "x", ""}, &record, &error));
  ASSERT_TRUE(layout.fill({"2"}, &record, &error));
  EXPECT_STREQ("2", record.getValue("M.Nr")->asString());
  EXPECT_EQ(nullptr, record.getValue("M.Name"));
  EXPECT_EQ(nullptr, record.getValue("M.Liste#"));
  ASSERT_TRUE(layout.fill({"", "", "", ""}, &record, &error));
  EXPECT_EQ(nullptr, record.getValue("M.Nr"));
}

// Every setter by field marks the record, as the rules set fields; the
// host's own filling by key does not.
TEST(RecordLayoutTest, ARecordThatARunSetAFieldOfIsNotFilledAgain) {
  StandaloneRoot root;
  RecordLayout layout({"Antrag.Name"});
  std::unique_ptr<quorel::SimpleDataRecord> kept;
  std::string error;
  std::vector<std::function<void(quorel::SimpleDataRecord *)>> runs = {
      [&](quorel::SimpleDataRecord *r) { r->setString(root.name, "Regel"); },
      [&](quorel::SimpleDataRecord *r) { r->setInteger(root.alter, 3); },
      [&](quorel::SimpleDataRecord *r) { r->setReal(root.betrag, 1.5); },
      [&](quorel::SimpleDataRecord *r) { r->setEmpty(root.name); }};
  for (const auto &run : runs) {
    quorel::SimpleDataRecord *record = renewedRecord(&kept);
    ASSERT_TRUE(layout.fill({"Anna"}, record, &error));
    EXPECT_EQ(record, renewedRecord(&kept));  // filling by key leaves it the row's
    run(record);
    EXPECT_TRUE(record->isSetByField());
    quorel::SimpleDataRecord *fresh = renewedRecord(&kept);
    EXPECT_EQ(nullptr, fresh->getValue("Antrag.Name"));
    EXPECT_FALSE(fresh->isSetByField());
  }
}

TEST(HierarchyTextsTest, KeptTextsFollowTheFieldsAndTheirIndices) {
  StandaloneRoot root;
  TestRun run;
  std::int32_t second[] = {1, -1};
  Field *vorname = static_cast<ChildTopic *>(root.kinder->getElement(&run.runtime, second))->vorname;
  HierarchyTexts texts;
  for (int round = 0; round < 2; ++round) {  // worked out, then kept
    EXPECT_EQ(root.name->getHierarchyText(), texts.of(root.name));
    EXPECT_EQ("Root.Kinder[1].Vorname", texts.of(vorname));
    EXPECT_EQ("", texts.of(nullptr));
  }
  TextForm quoted = [](std::string *out, std::string_view text) { *out += "<" + std::string(text) + ">"; };
  EXPECT_EQ("<Root.Kinder[1].Vorname>", texts.of(vorname, quoted));
  EXPECT_EQ("", texts.of(nullptr, quoted));
  // New indices of an element reach the texts kept for the fields below it,
  // and their forms.
  std::int32_t third[] = {2, -1};
  vorname->getParent()->setIndices(third);
  EXPECT_EQ("<Root.Kinder[2].Vorname>", texts.of(vorname, quoted));
  EXPECT_EQ("Root.Kinder[2].Vorname", texts.of(vorname));
  vorname->getParent()->setIndices(second);
  // More fields than are kept at hand, asked for in turns, each by its own
  // text.
  std::vector<Field *> names;
  for (std::int32_t k = 0; k < 200; ++k) {
    std::int32_t at[] = {k, -1};
    names.push_back(static_cast<ChildTopic *>(root.kinder->getElement(&run.runtime, at))->vorname);
  }
  for (int round = 0; round < 3; ++round) {
    for (std::size_t k = 0; k < names.size(); k += static_cast<std::size_t>(round + 1)) {
      ASSERT_EQ("Root.Kinder[" + std::to_string(k) + "].Vorname", texts.of(names[k])) << round;
      ASSERT_EQ("<Root.Kinder[" + std::to_string(k) + "].Vorname>", texts.of(names[k], quoted)) << round;
      ASSERT_EQ(root.name->getHierarchyText(), texts.of(root.name));
    }
  }
}

TEST(ProblemFormatTest, JsonLinesCarryEveryByteAnywhereInAText) {
  // Each byte at each place within and around the eight bytes that the
  // writer looks at together, among plain bytes and among quotes.
  auto format = ProblemFormat::create("json");
  for (int byte = 1; byte < 256; ++byte) {
    for (std::size_t before = 0; before < 10; ++before) {
      for (char filler : {'a', '"', '\xFC'}) {
        Problem p;
        p.text = std::string(before, filler) + static_cast<char>(byte) + std::string(9 - before, 'b');
        p.details = p.text->substr(before);  // of every length up to a word and a bit
        p.sections = {*p.text};
        std::string line;
        format->appendRecord({1, 2}, {p}, &line);
        nlohmann::json read = nlohmann::json::parse(line);
        ASSERT_EQ(toUtf8(p.text->c_str()), read["text"].get<std::string>()) << byte << " after " << before;
        ASSERT_EQ(toUtf8(p.details->c_str()), read["details"].get<std::string>()) << byte << " after " << before;
        ASSERT_EQ(toUtf8(p.text->c_str()), read["sections"][0].get<std::string>());
      }
    }
  }
}

TEST(EncodingTest, Windows1252AndUtf8BothWays) {
  EXPECT_EQ("a\xC3\xBC\xC3\x9F\xE2\x82\xAC\xEF\xBF\xBD", toUtf8("a\xFC\xDF\x80\x81"));
  std::string back;
  std::size_t offset = 99;
  ASSERT_TRUE(fromUtf8("M\xC3\xBCnchen \xE2\x82\xAC \xC5\x93", &back, &offset));
  EXPECT_EQ("M\xFCnchen \x80 \x9C", back);
  // Outside the code page, malformed, overlong, or a NUL: the offset names it.
  EXPECT_FALSE(fromUtf8("ab\xE2\x82\xBF", &back, &offset));  // the bitcoin sign
  EXPECT_EQ(2u, offset);
  for (const char *bad : {"x\xC3", "x\xC0\xAF", "x\xED\xA0\x80"}) {
    EXPECT_FALSE(fromUtf8(bad, &back, &offset)) << bad;
    EXPECT_EQ(1u, offset);
  }
  EXPECT_FALSE(fromUtf8(std::string_view("x\0y", 3), &back, &offset));
  // Every character of the code page goes there and back.
  for (int byte = 1; byte < 256; ++byte) {
    char text[2] = {static_cast<char>(byte), 0};
    std::string utf8 = toUtf8(text);
    if (utf8 == "\xEF\xBF\xBD") continue;  // undefined in the code page
    ASSERT_TRUE(fromUtf8(utf8, &back, &offset)) << byte;
    EXPECT_EQ(std::string(text), back);
  }
}

TEST(EncodingTest, TextsOfAnyLengthWithAnyByteAnywhere) {
  // Texts are converted a word at a time, their ends as shorter loads: each
  // length around a word or two, each place, bytes plain and not.
  auto oneByOne = [](const std::string &text) {
    std::string out;
    for (char c : text) out += toUtf8(std::string(1, c).c_str());
    return out;
  };
  for (std::size_t length = 0; length <= 18; ++length) {
    for (std::size_t at = 0; at < std::max<std::size_t>(length, 1); ++at) {
      for (char c : {'a', '\x80', '\x81', '\xFC', '\x7F'}) {
        std::string text(length, 'x');
        if (length > 0) text[at] = c;
        if (length > 3) text[length - 1] = '\xDF';  // a second at the end
        ASSERT_EQ(oneByOne(text), toUtf8(text.c_str())) << length << " " << at << " " << static_cast<int>(c);
      }
    }
  }
}

TEST(ProblemFormatTest, TextAndJsonLinesSpeakOneSchema) {
  Problem p;
  p.id = "X-1";
  p.weight = 3;
  p.text = "Stra\xDF" "e \"fehlt\"";
  p.field = "A.B[1]";
  p.fieldIndices = {1};
  p.accessed = {"A.B[1]", "A.C"};
  p.sections = {"Innen", "Plausi"};
  Problem hint;
  hint.type = static_cast<ProblemType>(2);  // any type but an error
  std::string text, json;
  auto lines = ProblemFormat::create("text");
  Problem own;
  own.type = static_cast<ProblemType>(5);
  lines->appendRecord({6, 7}, {p, hint}, &text);
  lines->appendRecord({8, 9}, {own}, &text);
  lines->appendFailure({1, 0}, "kaputt", &text);
  Summary summary;
  summary.add({p, hint, p}, 2, true);
  summary.add(FoundProblems(), 0, false);
  summary.add({hint}, 0, true);
  lines->appendSummary(summary, &text);
  EXPECT_EQ("line 7: error X-1 (weight 3): Stra\xC3\x9F" "e \"fehlt\"\n  field: A.B[1]\n  read: A.B[1] A.C\n"
            "  sections: Innen < Plausi\nline 7: hint  (weight 0): \n  sections:\nline 9: type 5  (weight 0): \n  sections:\n"
            "record 1: not checked: kaputt\n"
            "\nproblem   problems   records  share\n"
            "(no id)          2         2  66.7%\n"
            "X-1              2         1  33.3%\n"
            "3 records: 2 checked, 1 not checked; 4 problems, 2 errors\n",
            text);
  auto format = ProblemFormat::create("json");
  format->appendRecord({6, 7}, {p}, &json);
  format->appendFailure({7, 0}, "kaputt\n\x01\t\\", &json);
  format->appendSummary(summary, &json);
  EXPECT_EQ("{\"record\":6,\"line\":7,\"id\":\"X-1\",\"type\":1,\"weight\":3,\"text\":\"Stra\xC3\x9F" "e \\\"fehlt\\\"\","
            "\"details\":null,\"field\":\"A.B[1]\",\"field_indices\":[1],\"accessed\":[\"A.B[1]\",\"A.C\"],"
            "\"sections\":[\"Innen\",\"Plausi\"],\"failure\":null}\n"
            "{\"record\":7,\"line\":null,\"id\":null,\"type\":null,\"weight\":null,\"text\":null,\"details\":null,"
            "\"field\":null,\"field_indices\":[],\"accessed\":[],\"sections\":[],"
            "\"failure\":\"kaputt\\n\\u0001\\t\\\\\"}\n"
            "{\"summary\":{\"records\":3,\"checked\":2,\"not_checked\":1,\"problems\":4,\"errors\":2}}\n",
            json);
  EXPECT_EQ(nullptr, ProblemFormat::create("xml"));
  // Counts of threads add up.
  Summary other, merged;
  other.add({p}, 1, true);
  merged.merge(summary);
  merged.merge(other);
  EXPECT_EQ(4, merged.records);
  EXPECT_EQ(3, merged.checked());
  EXPECT_EQ(3, merged.ids["X-1"].problems);
  EXPECT_EQ(2, merged.ids["X-1"].records);
}

// The material "Orte": a postcode, a name and a number per row.
class PlaceTopic : public TestMaterialTopic {
 public:
  PlaceTopic() : TestMaterialTopic("Orte") {
    plz = field("PLZ", FieldTypeText);
    name = field("Name", FieldTypeText);
  }

  Field *plz;
  Field *name;
};


// What a query gives (the filter takes the conditions over): the positions of the rows read, or "yes"/"no" for
// containment, or the exception's type.
std::string answer(TableMaterialAccess *access, PlaceTopic *topic, const std::vector<FilterCondition *> &conditions,
                   Value *contained) {
  RecordFilter filter;
  for (FilterCondition *condition : conditions) filter.addCondition(condition);
  FieldSet fields;
  fields.addField(topic->name);
  try {
    if (contained != nullptr) {
      ValueSet values;
      values.addValue(contained);
      return access->containsValues(topic, &filter, &fields, &values) ? "yes" : "no";
    }
    DataRecordSet result;
    access->readRecords(&result, topic, &filter, &fields);
    std::string rows;
    for (std::int32_t i = 0; i < result.getNumOfDataRecords(); ++i) {
      Value *name = static_cast<SimpleDataRecord *>(result.getDataRecord(i))->getValue("Orte.Name");
      rows += std::string(name != nullptr ? name->asString() : "-") + ";";
    }
    return rows;
  } catch (const PlausiException &e) {
    return "exception " + std::to_string(e.getType());
  }
}

TEST(TableMaterialAccessTest, IndexesAnswerAsAScanDoes) {
  VectorRows source({"Orte.PLZ", "Orte.Name"}, {{"10115", "Berlin"},
                                                  {"80331", "M\xFCnchen"},
                                                  {"10115", "Mitte"},
                                                  {"", "Nirgends"},
                                                  {"0815", "Null"},
                                                  {"815", "Ohne"},
                                                  {"abc", "Text"}});
  VectorRows again = source;
  TableMaterialAccess indexed, scanned;
  std::string message;
  ASSERT_TRUE(indexed.load("Orte", &source, &message)) << message;
  ASSERT_TRUE(scanned.load("Orte", &again, &message));
  scanned.setIndexing(false);
  PlaceTopic topic;
  std::vector<std::unique_ptr<Value>> values;
  values.emplace_back(new StringValue("10115"));
  values.emplace_back(new StringValue("0815"));
  values.emplace_back(new StringValue(""));
  values.emplace_back(new NumberValue(815.0));
  values.emplace_back(new StringValue("M\xFCnchen"));
  values.emplace_back(new StringValue("Mitte"));
  int queries = 0;
  for (auto &value : values) {
    for (int op = OPERATOR_EQUAL; op <= OPERATOR_LESS_EQUAL; ++op) {
      for (auto &second : values) {
        for (Value *contained : {static_cast<Value *>(nullptr), second.get()}) {
          auto conditions = [&] {
            return std::vector<FilterCondition *>{
                new FilterCondition(topic.plz, static_cast<OperatorType>(op), value.get()),
                new FilterCondition(topic.name, OPERATOR_NOT_EQUAL, second.get())};
          };
          std::string expected = answer(&scanned, &topic, conditions(), contained);
          EXPECT_EQ(expected, answer(&indexed, &topic, conditions(), contained))
              << "operator " << op << " " << value->asString() << " / " << second->asString();
          ++queries;
        }
      }
    }
  }
  EXPECT_EQ(6 * 6 * 6 * 2, queries);
  // Rows in table order; an empty cell meets only "not equal".
  std::vector<FilterCondition *> berlin{new FilterCondition(topic.plz, OPERATOR_EQUAL, values[0].get())};
  EXPECT_EQ("Berlin;Mitte;", answer(&indexed, &topic, berlin, nullptr));
  // The text "0815" is not the number 815, which equals "0815" and "815".
  std::vector<FilterCondition *> text{new FilterCondition(topic.plz, OPERATOR_EQUAL, values[1].get())};
  EXPECT_EQ("Null;", answer(&indexed, &topic, text, nullptr));
  std::vector<FilterCondition *> number{new FilterCondition(topic.plz, OPERATOR_EQUAL, values[3].get())};
  EXPECT_EQ("Null;Ohne;", answer(&indexed, &topic, number, nullptr));
  EXPECT_TRUE(indexed.isMaterialAvailable(&topic));
}

TEST(TableMaterialAccessTest, BadRowsNameTheirPlace) {
  VectorRows source({"Orte.Liste#"}, {{"3"}, {"drei"}});
  TableMaterialAccess access;
  std::string message;
  EXPECT_FALSE(access.load("Orte", &source, &message));
  EXPECT_EQ("orte:3: the size Orte.Liste# is not a whole number from 0 to 100000: drei", message);
  PlaceTopic topic;
  EXPECT_FALSE(access.isMaterialAvailable(&topic));
}

}  // namespace
}  // namespace host
}  // namespace quorel
