// The CSV reader of quorel-check, and the filling of a record from its rows.

#include <sstream>

#include "quorel/host/csv_material_access.h"
#include "quorel/host/csv_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  std::istringstream in(std::string(reinterpret_cast<const char *>(data), size));
  quorel::host::CsvReader reader(in);
  std::vector<std::string> header, row;
  std::string error;
  if (!reader.next(&header)) return 0;
  while (reader.next(&row)) {
    quorel::SimpleDataRecord record;
    quorel::host::fillRecord(header, row, &record, &error);
  }
  return 0;
}
