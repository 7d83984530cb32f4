#include "quorel/host/checker.h"

#include <cxxabi.h>

#include <cstdlib>
#include <exception>
#include <map>
#include <set>
#include <typeinfo>

#include "quorel/host/load_error.h"
#include "quorel/platform/dynamic_library.h"

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

// The class name of the exception, as the source spells it.
std::string classOf(const std::type_info &type) {
  int status = 0;
  char *name = abi::__cxa_demangle(type.name(), nullptr, nullptr, &status);
  std::string text = status == 0 && name != nullptr ? name : type.name();
  std::free(name);
  return text;
}

}  // namespace

std::string Outcome::failure() const {
  return "exception " + (cppType.empty() ? std::to_string(exceptionType) : cppType) + ": " + message;
}

void Outcome::failWithCurrentException() {
  failed = true;
  exceptionType = 0;
  try {
    throw;
  } catch (abi::__forced_unwind &) {
    throw;  // a thread being cancelled must go on unwinding
  } catch (const std::exception &e) {
    // Rule code is C++ and may throw what C++ throws.
    cppType = classOf(typeid(e));
    message = e.what();
  } catch (...) {
    cppType = "of an unknown type";
    message = "not derived from std::exception";
  }
}

Checker::Checker(const CheckSettings &settings)
    : settings_(settings), plausi_(load(&loader_, settings, &ruleFile_)), flow_(settings.flow) {
  const char *const *declared = plausi_->getFlows();
  if (!flow_ && declared != nullptr && declared[0] != nullptr) flow_ = declared[0];
  for (const auto &init : settings.inits) {
    // A value set before under the name's key would be dropped, not deleted
    // (repeatedInit lets front ends refuse such settings).
    delete inits_.get(init.first.c_str());
    inits_.set(init.first.c_str(), init.second->copy());
  }
  configure(&context_);
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

std::string Checker::checkFlow(const std::string &howToName) const {
  if (!flow_) {
    return "module " + settings_.module + " declares no flows, so it has no default flow: name the flow to run with " +
           howToName;
  }
  if (plausi_->isKnownFlow(flow_->c_str())) return std::string();
  std::string known;
  for (const char *const *flow = plausi_->getFlows(); *flow != nullptr; ++flow) {
    known += (known.empty() ? "" : ", ") + std::string(*flow);
  }
  std::string named = flow_->empty() ? "with an empty name" : *flow_;
  return "module " + settings_.module + " has no flow " + named + " (its flows: " + (known.empty() ? "none" : known) +
         ")";
}

void Checker::configure(PlausiContext *context) {
  if (flow_) context->setFlow(flow_->c_str());
  context->setProblemWeightLevel(settings_.weightLevel);
  context->setMaterialAccess(settings_.materials);
  if (settings_.logger != nullptr) context->setLogger(settings_.logger);
  for (const auto &init : settings_.inits) {
    context->setInitParam(init.first.c_str(), inits_.get(init.first.c_str()));
  }
}

void Checker::check(DataRecord *record, Outcome *outcome) {
  outcome->failed = false;
  outcome->exceptionType = 0;
  outcome->cppType.clear();
  outcome->message.clear();
  context_.reset(record);
  try {
    plausi_->perform(&context_);
  } catch (const PlausiException &e) {
    outcome->failed = true;
    outcome->exceptionType = e.getType();
    outcome->message = e.getMessage();
  } catch (...) {
    // Fails this record, not the run of all the others.
    outcome->failWithCurrentException();
  }
  outcome->problems = FoundProblems(context_, &hierarchyTexts_);
  outcome->errors = context_.getNumOfProblems(PROBLEM_ERROR);
  if (settings_.afterRun) settings_.afterRun();
}

bool isRuleFile(const std::string &path) {
  return path.size() > 3 && path.compare(path.size() - 3, 3, ".qr") == 0;
}

std::vector<std::string> unreadInits(const CheckSettings &settings) {
  std::vector<std::string> messages;
  std::set<std::string> read;
  std::string reader;
  if (settings.rules != nullptr) {
    if (settings.rules->module().computedParameter) return messages;
    read = settings.rules->module().parameters;
    reader = "rule file " + settings.rules->name();
  } else {
    using NamesEntry = const char *const *(*)();
    // The library is loaded already: this finds the same one.
    void *library = platform::loadLibrary(settings.library.c_str());
    void *entry = platform::findSymbol(library, ("initParamsReadByPlausi" + settings.module).c_str());
    platform::takeLastError();
    if (entry == nullptr) return messages;
    for (const char *const *name = reinterpret_cast<NamesEntry>(entry)(); *name != nullptr; ++name) read.insert(*name);
    reader = "module " + settings.module;
  }
  std::string names;
  for (const std::string &name : read) names += (names.empty() ? "" : ", ") + name;
  for (const auto &init : settings.inits) {
    if (read.count(init.first) > 0) continue;
    messages.push_back("init parameter " + init.first + " is given, but " + reader +
                       " reads no parameter of that name (" + (names.empty() ? "it reads none" : "it reads: " + names) +
                       ")");
  }
  return messages;
}

std::string repeatedInit(const CheckSettings &settings) {
  std::map<std::int32_t, const std::string *> byKey;
  for (const auto &init : settings.inits) {
    auto entry = byKey.emplace(Util::getHashCode(init.first.c_str()), &init.first);
    if (entry.second) continue;
    const std::string &first = *entry.first->second;
    if (first == init.first) return "init parameter " + first + " is given more than once";
    return "init parameters " + first + " and " + init.first +
           " are one to the rules, which know a parameter by a hash of its name: give one of them";
  }
  return "";
}

std::shared_ptr<const lang::RuleSet> readRules(const std::string &path, std::string *message) {
  lang::Diagnostics diagnostics;
  std::shared_ptr<const lang::RuleSet> rules = lang::readRuleFile(path, &diagnostics);
  if (rules == nullptr) *message = diagnostics.format();
  return rules;
}

}  // namespace host
}  // namespace quorel
