// What the start of a file, and the rows beyond it, say against the
// encoding it is read in.

#include "quorel/host/encoding_doubt.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "quorel/host/csv_row_source.h"

namespace {

using quorel::host::CsvRowSource;
using quorel::host::doubtEncoding;
using quorel::host::EncodingDoubt;
using quorel::host::FileEncoding;
using quorel::host::utf8Fault;

constexpr std::size_t kNone = std::string::npos;

TEST(EncodingDoubtTest, Utf8IsToldFromWindows1252AtTheStartOfAFile) {
  std::size_t beyond;
  // Valid UTF-8, the first character beyond ASCII at 5.
  EXPECT_EQ(kNone, utf8Fault("Name;M\xC3\xBCller\n", &beyond));
  EXPECT_EQ(6u, beyond);
  // A sequence that the end of the sample cuts short counts as whole, a
  // broken one does not.
  EXPECT_EQ(kNone, utf8Fault("ab\xE2\x82", &beyond));
  EXPECT_EQ(2u, utf8Fault("ab\xE2\x82x", &beyond));
  // An overlong form, a surrogate, a lone continuation byte, Windows-1252.
  for (const char *bad : {"a\xC0\xAF", "a\xED\xA0\x80", "a\x80", "a\xFC" "b"}) {
    EXPECT_EQ(1u, utf8Fault(bad, &beyond)) << bad;
    EXPECT_EQ(kNone, beyond) << bad;
  }

  // UTF-8 read as Windows-1252: the line counts "\r\n" and a lone "\r" as
  // one end each; the cell is shown both ways.
  EncodingDoubt utf8 = doubtEncoding("a.csv", "Name;Ort\r\nx;y\rM\xC3\xBCller;Berlin\n", FileEncoding::kWindows1252);
  EXPECT_EQ("a.csv looks like UTF-8 (line 3 holds \"M\xC3\xBCller\"), but is read as Windows-1252, which makes that "
            "\"M\xC3\x83\xC2\xBCller\"",
            utf8.message);
  EXPECT_STREQ("utf-8", utf8.fits);
  // Windows-1252 read as UTF-8.
  EncodingDoubt ansi = doubtEncoding("b.csv", "Name\nM\xFCller\n", FileEncoding::kUtf8);
  EXPECT_EQ("b.csv is read as UTF-8, but line 2 is no UTF-8 (as Windows-1252 it holds \"M\xC3\xBCller\")",
            ansi.message);
  EXPECT_STREQ("windows-1252", ansi.fits);

  // Nothing to say: ASCII either way, and each encoding on its own kind.
  for (auto read : {FileEncoding::kWindows1252, FileEncoding::kUtf8}) {
    EXPECT_EQ("", doubtEncoding("c.csv", "Name\nMueller\n", read).message);
  }
  EXPECT_EQ("", doubtEncoding("d.csv", "Name\nM\xFCller\n", FileEncoding::kWindows1252).message);
  EXPECT_EQ("", doubtEncoding("e.csv", "Name\nM\xC3\xBCller\n", FileEncoding::kUtf8).message);

  // A long cell is cut between characters, never inside one.
  std::string cell = std::string(39, 'a') + "\xC3\xBC" + std::string(20, 'b');
  EncodingDoubt cut = doubtEncoding("f.csv", "x;" + cell, FileEncoding::kWindows1252);
  EXPECT_NE(std::string::npos, cut.message.find("holds \"" + std::string(39, 'a') + "\")")) << cut.message;
}

// A file whose start is ASCII alone: the first row beyond ASCII decides
// what the start could not, wherever it stands. Opened whole, the file is
// looked at to that row before any row is read; a part's reader watches
// its rows instead.
TEST(EncodingDoubtTest, RowsBeyondAnAsciiStartDecide) {
  const std::string path = ::testing::TempDir() + "encoding_doubt_rows_" + std::to_string(getpid()) + ".csv";
  std::string filler;
  int rows = 1;  // the first row, and then the filler's
  while (filler.size() < quorel::host::kEncodingSample) {
    filler += "Mueller;Berlin\n";
    ++rows;
  }
  // The file is the header, first, the filler, one more ASCII row and then
  // later. Gives the advice at the start, and the late advice once all rows
  // are read; the rows read are the same either way.
  struct Advice {
    std::string start, late;
  };
  auto advice = [&](bool whole, const std::string &first, const std::string &later, FileEncoding encoding) {
    std::ofstream(path, std::ios::binary) << "Name;Ort\n" << first << filler << "Schulz;Bonn\n" << later;
    std::string message;
    std::unique_ptr<CsvRowSource> source = whole ? CsvRowSource::open(path, &message, encoding)
                                                 : CsvRowSource::open(path, quorel::host::CsvPart(), &message, encoding);
    EXPECT_NE(nullptr, source) << message;
    if (source == nullptr) return Advice{"not opened", ""};
    Advice said{quorel::host::encodingAdvice(*source, "--encoding ENCODING"), ""};
    quorel::host::Row row;
    for (int read = 0; read <= rows; ++read) EXPECT_TRUE(source->next(&row));
    EXPECT_EQ("", source->lateEncodingDoubt().message);
    int more = 0;
    while (source->next(&row)) ++more;
    EXPECT_EQ(std::count(later.begin(), later.end(), '\n'), more);
    said.late = quorel::host::lateEncodingAdvice(*source, "--encoding ENCODING");
    return said;
  };

  const std::string line = std::to_string(rows + 3);
  const std::string doubt = path + " looks like UTF-8 (line " + line + " holds \"M\xC3\xBCller\"), but is read as " +
                            "Windows-1252, which makes that \"M\xC3\x83\xC2\xBCller\"";
  const std::string utf8Later = "M\xC3\xBCller;Berlin\nWeber;Ulm\n";
  Advice whole = advice(true, "Meier;Koeln\n", utf8Later, FileEncoding::kWindows1252);
  EXPECT_EQ(doubt + ": pass --encoding utf-8", whole.start);
  EXPECT_EQ("", whole.late);
  Advice part = advice(false, "Meier;Koeln\n", utf8Later, FileEncoding::kWindows1252);
  EXPECT_EQ("", part.start);
  EXPECT_EQ(doubt + "; its rows from that line on were read that way: pass --encoding utf-8", part.late);
  for (bool opened : {true, false}) {
    // The first row beyond ASCII decides: Windows-1252 there, nothing later.
    Advice first = advice(opened, "Meier;Koeln\n", "M\xFCller;Berlin\nM\xC3\xBCller;Berlin\n",
                          FileEncoding::kWindows1252);
    EXPECT_EQ("", first.start + first.late);
    // So does a start that holds Windows-1252 already.
    Advice early = advice(opened, "Meier;K\xF6ln\n", "M\xC3\xBCller;Berlin\n", FileEncoding::kWindows1252);
    EXPECT_EQ("", early.start + early.late);
    // Read as UTF-8, a Windows-1252 row fails on its own and is not looked for.
    Advice utf8 = advice(opened, "Meier;Koeln\n", "M\xFCller;Berlin\n", FileEncoding::kUtf8);
    EXPECT_EQ("", utf8.start + utf8.late);
    // Nothing beyond ASCII at all.
    Advice ascii = advice(opened, "Meier;Koeln\n", "Weber;Ulm\n", FileEncoding::kWindows1252);
    EXPECT_EQ("", ascii.start + ascii.late);
  }
  std::remove(path.c_str());
}

// A pipe cannot be read twice, but its start is read ahead and kept: it is
// told as a file of the same bytes is, and its rows read the same.
TEST(EncodingDoubtTest, APipeIsToldByItsStartAsAFileIs) {
  const std::string base = ::testing::TempDir() + "encoding_doubt_pipe_" + std::to_string(getpid());
  const std::string file = base + ".csv", pipe = base + ".fifo";
  std::string filler;
  while (filler.size() < quorel::host::kEncodingSample) filler += "Mueller;Berlin\n";
  // What a source says, at the start and once read, and its rows.
  auto read = [](const std::string &path, FileEncoding encoding) {
    std::string message;
    std::unique_ptr<CsvRowSource> source = CsvRowSource::open(path, &message, encoding);
    if (source == nullptr) return "not opened: " + message;
    std::string out = quorel::host::encodingAdvice(*source, "E") + "\n";
    quorel::host::Row row;
    while (source->next(&row)) out += row.cells[0] + "|";
    return out + "\n" + quorel::host::lateEncodingAdvice(*source, "E");
  };
  // The file's advice and the pipe's, with the file's name as the pipe's.
  auto both = [&](const std::string &rows, FileEncoding encoding) {
    const std::string text = "Name;Ort\n" + rows;
    std::ofstream(file, std::ios::binary) << text;
    EXPECT_EQ(0, mkfifo(pipe.c_str(), 0600));
    std::thread writer([&] { std::ofstream(pipe, std::ios::binary) << text; });
    std::string piped = read(pipe, encoding);
    writer.join();
    std::remove(pipe.c_str());
    std::string fromFile = read(file, encoding);
    for (std::size_t at; (at = fromFile.find(file)) != kNone;) fromFile.replace(at, file.size(), pipe);
    return std::make_pair(fromFile, piped);
  };
  const std::string utf8 = "M\xC3\xBCller;Berlin\n";
  for (const std::string &rows : {utf8 + filler, filler + "M\xFCller;Bonn\n" + utf8, std::string("Schulz;Bonn\n")}) {
    for (FileEncoding encoding : {FileEncoding::kWindows1252, FileEncoding::kUtf8}) {
      auto [fromFile, piped] = both(rows, encoding);
      EXPECT_EQ(fromFile, piped);
    }
  }
  // Beyond an ASCII start a file is looked at ahead; a pipe's rows are
  // watched, and the row is named once they are read.
  auto [fromFile, piped] = both("Schulz;Bonn\n" + filler + utf8, FileEncoding::kWindows1252);
  EXPECT_EQ('\n', piped[0]) << piped;
  EXPECT_EQ(fromFile.substr(0, fromFile.find(": pass E")),
            piped.substr(piped.rfind('\n') + 1, fromFile.find(": pass E")));
  EXPECT_NE(kNone, piped.find("; its rows from that line on were read that way: pass E")) << piped;
  std::remove(file.c_str());
}

}  // namespace
