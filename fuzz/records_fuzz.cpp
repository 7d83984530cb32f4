// Records of fuzzed field texts checked by the example module "Antrag", with
// its material of municipalities: every rule, function and mask the module
// uses meets texts nobody chose. Each input line is one cell of a row under
// the module's CSV header; every record must end in problems or a
// PlausiException, never a crash.

#include <memory>

#include "quorel/host/record_layout.h"
#include "fuzz_input.h"
#include "quorel/host/csv_row_source.h"
#include "quorel/host/table_material_access.h"

namespace {

const std::vector<std::string> kHeader = {
    "Antrag.Antragsnummer",          "Antrag.Antragsteller.Name",     "Antrag.Antragsteller.Vorname",
    "Antrag.Antragsteller.Geburtsdatum", "Antrag.Antragsteller.Familienstand", "Antrag.Adresse.Strasse",
    "Antrag.Adresse.PLZ",            "Antrag.Adresse.Ort",            "Antrag.Kinder#",
    "Antrag.Kinder[0].Vorname",      "Antrag.Kinder[0].Geburtsdatum", "Antrag.Kinder[1].Vorname",
    "Antrag.Kinder[1].Geburtsdatum", "Antrag.Betrag",                 "Antrag.Antragsdatum",
    "Antrag.Einkommen#",             "Antrag.Einkommen[0]",           "Antrag.Einkommen[1]"};

// Columns of the array sizes.
constexpr std::size_t kChildren = 8;
constexpr std::size_t kIncomes = 15;

// Loaded once: loading per input would measure dlopen, not the rules.
struct Module {
  Module() {
    rules = loader.loadPlausi(QUOREL_ANTRAG_MODULE, "Antrag");
    std::string message;
    auto source = quorel::host::CsvRowSource::open(QUOREL_GEMEINDEN_CSV, &message);
    places.load("Gemeinden", source.get(), &message);
  }
  quorel::PlausiLoader loader;
  quorel::Plausi *rules;
  quorel::host::TableMaterialAccess places;
  const quorel::host::RecordLayout layout{kHeader};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  static Module module;
  std::vector<std::string> row = splitInput(data, size, kHeader.size());
  quorel::SimpleDataRecord record;
  std::string error;
  // Arrays of at most 9 elements keep each execution short; the reader's
  // own bound is tested elsewhere.
  if (row[kChildren].size() > 1 || row[kIncomes].size() > 1) return 0;
  if (!module.layout.fill(row, &record, &error)) return 0;
  for (const char *flow : {"Pruefung", "Schnellpruefung"}) {
    quorel::PlausiContext context(&record);
    context.setFlow(flow);
    context.setMaterialAccess(&module.places);
    try {
      module.rules->perform(&context);
    } catch (const quorel::PlausiException &) {
    }
  }
  return 0;
}
