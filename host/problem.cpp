#include "quorel/host/problem.h"

namespace quorel {
namespace host {

namespace {

// The text of no field, in every form.
const std::string &none() {
  static const std::string kNone;
  return kNone;
}

// Copies into the string's kept memory: run after run the copies of
// problems take the place of the former run's. The texts come from the
// library's problems, never from the target, so the copy need not take
// std::string::assign's general way, which guards against that and costs
// several times the copy of a short text.
void assign(std::string *target, std::string_view text) {
  target->clear();
  target->append(text.data(), text.size());
}

void assign(std::optional<std::string> *target, std::optional<std::string_view> text) {
  if (!text) {
    target->reset();
  } else if (*target) {
    assign(&**target, *text);
  } else {
    target->emplace(*text);
  }
}

}  // namespace

const std::string &HierarchyTexts::of(const FieldDescriptor *field) {
  return field != nullptr ? keptOf(field).text : none();
}

const std::string &HierarchyTexts::of(const FieldDescriptor *field, TextForm form) {
  if (field == nullptr) return none();
  Kept &kept = keptOf(field);
  for (const auto &made : kept.forms) {
    if (made.first == form) return made.second;
  }
  kept.forms.emplace_back(form, std::string());
  form(&kept.forms.back().second, kept.text);
  return kept.forms.back().second;
}

HierarchyTexts::Kept &HierarchyTexts::keptOf(const FieldDescriptor *field) {
  std::int32_t hash = field->getHierarchyHash().get();
  Recent &recent = recent_[(reinterpret_cast<std::uintptr_t>(field) / alignof(FieldDescriptor)) % kRecent];
  if (recent.field != field) {
    auto found = kept_.find(field);
    if (found == kept_.end()) found = kept_.emplace(field, Kept{hash, field->getHierarchyText(), {}}).first;
    recent = {field, &found->second};
  }
  Kept &kept = *recent.kept;
  if (kept.hash != hash) kept = Kept{hash, field->getHierarchyText(), {}};
  return kept;
}

std::size_t FoundProblem::indexCount() const {
  const std::int32_t *indices = p_.getReferenceFieldIndices();
  std::size_t count = 0;
  while (indices != nullptr && indices[count] >= 0) ++count;
  return count;
}

std::string_view FoundProblem::section(std::size_t i) const {
  auto index = static_cast<std::int32_t>(i);
  return std::string_view(p_.getPlausiSection(index), p_.getPlausiSectionLength(index));
}

void copyProblem(const FoundProblem &p, Problem *problem) {
  assign(&problem->id, p.id());
  problem->type = p.type();
  problem->weight = p.weight();
  assign(&problem->text, p.text());
  assign(&problem->details, p.details());
  assign(&problem->field, p.field());
  problem->fieldIndices.resize(p.indexCount());
  for (std::size_t k = 0; k < problem->fieldIndices.size(); ++k) problem->fieldIndices[k] = p.index(k);
  problem->accessed.resize(p.accessedCount());
  for (std::size_t f = 0; f < problem->accessed.size(); ++f) assign(&problem->accessed[f], p.accessed(f));
  problem->sections.resize(p.sectionCount());
  for (std::size_t s = 0; s < problem->sections.size(); ++s) assign(&problem->sections[s], p.section(s));
}

void collectProblems(const FoundProblems &found, std::vector<Problem> *problems) {
  problems->resize(found.size());
  for (std::size_t i = 0; i < found.size(); ++i) copyProblem(found[i], &(*problems)[i]);
}

}  // namespace host
}  // namespace quorel
