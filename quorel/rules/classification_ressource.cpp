#include "quorel/rules/classification_ressource.h"

namespace quorel {

ClassificationRessource::~ClassificationRessource() = default;

}  // namespace quorel
