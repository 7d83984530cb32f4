// A CSV file cut into parts reads, part after part, as the whole file does:
// the same rows with the same numbers, lines, cells and errors. The first
// byte of the input picks the size of the blocks, the rest is the file.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "quorel/host/csv_parts.h"
#include "quorel/host/csv_row_source.h"

namespace {

using quorel::host::CsvPart;
using quorel::host::CsvRowSource;
using quorel::host::Row;

// The rows of the part with their places; false when it cannot be opened.
bool readPart(const std::string &file, const CsvPart &part, std::vector<std::string> *rows) {
  std::string message;
  std::unique_ptr<CsvRowSource> source = CsvRowSource::open(file, part, &message);
  if (source == nullptr) return false;
  Row row;
  while (source->next(&row)) {
    std::string text = std::to_string(row.place.record) + "@" + std::to_string(row.place.line) + ":" + row.error;
    for (const std::string &cell : row.cells) text += "|" + cell;
    rows->push_back(text);
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  if (size == 0) return 0;
  static const std::string file = "/tmp/quorel_csv_parts_fuzz." + std::to_string(getpid()) + ".csv";
  static const int cleanUp = std::atexit([] { std::remove(file.c_str()); });
  static_cast<void>(cleanUp);
  std::ofstream(file, std::ios::binary).write(reinterpret_cast<const char *>(data + 1),
                                              static_cast<std::streamsize>(size - 1));
  std::vector<CsvPart> parts;
  std::string message;
  if (!quorel::host::splitCsvFile(file, 1 + data[0] % 64, &parts, &message)) std::abort();
  std::vector<std::string> whole, joined;
  bool opened = readPart(file, CsvPart(), &whole);
  for (const CsvPart &part : parts) {
    if (readPart(file, part, &joined) != opened) std::abort();
  }
  if (whole != joined) std::abort();
  return 0;
}
