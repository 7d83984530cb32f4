// The CSV reader of quorel-check, and the filling of a record from its rows.

#include <sstream>

#include "quorel/host/record_layout.h"
#include "quorel/host/csv_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  std::istringstream in(std::string(reinterpret_cast<const char *>(data), size));
  quorel::host::CsvReader reader(in);
  std::vector<std::string> header, row;
  std::string error;
  if (!reader.next(&header)) return 0;
  quorel::host::RecordLayout layout(header);
  while (reader.next(&row)) {
    quorel::SimpleDataRecord record;
    layout.fill(row, &record, &error);
  }
  return 0;
}
