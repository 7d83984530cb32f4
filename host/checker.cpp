#include "quorel/host/checker.h"

#include "quorel/host/load_error.h"

namespace quorel {
namespace host {

namespace {

Plausi *load(PlausiLoader *loader, const CheckSettings &settings, std::unique_ptr<Plausi> *ruleFile) {
  if (settings.rules != nullptr) {
    *ruleFile = settings.rules->createPlausi();
    return ruleFile->get();
  }
  try {
    return loader->loadPlausi(settings.library.c_str(), settings.module.c_str());
  } catch (const PlausiException &e) {
    throw LoadError(e, settings.library, settings.module, loader->getLastError());
  }
}

}  // namespace

Checker::Checker(const CheckSettings &settings)
    : settings_(settings), plausi_(load(&loader_, settings, &ruleFile_)) {
  for (const auto &init : settings.inits) inits_.set(init.first.c_str(), init.second->copy());
}

Checker::~Checker() {
  inits_.clear();
  if (ruleFile_ != nullptr) return;
  try {
    loader_.unloadPlausi(plausi_, settings_.module.c_str());
  } catch (const PlausiException &) {
    // A module without an unload entry keeps its Plausi; nothing to undo.
  }
}

std::string Checker::checkFlow() const {
  if (!settings_.flow || plausi_->isKnownFlow(settings_.flow->c_str())) return std::string();
  std::string known;
  for (const char *const *flow = plausi_->getFlows(); *flow != nullptr; ++flow) {
    known += (known.empty() ? "" : ", ") + std::string(*flow);
  }
  return "module " + settings_.module + " has no flow " + *settings_.flow + " (its flows: " +
         (known.empty() ? "none" : known) + ")";
}

void Checker::configure(PlausiContext *context) {
  if (settings_.flow) context->setFlow(settings_.flow->c_str());
  context->setProblemWeightLevel(settings_.weightLevel);
  context->setMaterialAccess(settings_.materials);
  if (settings_.logger != nullptr) context->setLogger(settings_.logger);
  for (const auto &init : settings_.inits) {
    context->setInitParam(init.first.c_str(), inits_.get(init.first.c_str()));
  }
}

void Checker::check(DataRecord *record, Outcome *outcome) {
  outcome->failed = false;
  outcome->message.clear();
  {
    PlausiContext context(record);
    configure(&context);
    try {
      plausi_->perform(&context);
    } catch (const PlausiException &e) {
      outcome->failed = true;
      outcome->exceptionType = e.getType();
      outcome->message = e.getMessage();
    }
    collectProblems(context, &outcome->problems);
    outcome->errors = context.getNumOfProblems(PROBLEM_ERROR);
  }
  if (settings_.afterRun) settings_.afterRun();
}

bool isRuleFile(const std::string &path) {
  return path.size() > 3 && path.compare(path.size() - 3, 3, ".qr") == 0;
}

std::shared_ptr<const lang::RuleSet> readRules(const std::string &path, std::string *message) {
  lang::Diagnostics diagnostics;
  std::shared_ptr<const lang::RuleSet> rules = lang::readRuleFile(path, &diagnostics);
  if (rules == nullptr) *message = diagnostics.format();
  return rules;
}

}  // namespace host
}  // namespace quorel
