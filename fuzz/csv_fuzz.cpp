// The CSV reader of quorel-check, and the filling of a record from its rows.

#include <sstream>

#include "csv_material_access.h"
#include "csv_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  std::istringstream in(std::string(reinterpret_cast<const char *>(data), size));
  quorel_check::CsvReader reader(in);
  std::vector<std::string> header, row;
  std::string error;
  if (!reader.next(&header)) return 0;
  while (reader.next(&row)) {
    quorel::SimpleDataRecord record;
    quorel_check::fillRecord(header, row, &record, &error);
  }
  return 0;
}
