// quorel-check: loads a rule module, runs one flow and prints the problems.
//
//   quorel-check LIBRARY MODULE [--flow NAME] [--weight-level N]
//
// Exit status: 0 when the run is ok, 1 when it reported an error problem,
// 2 for usage and load errors.

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>

#include <quorel/quorel.h>

namespace {

int usage() {
  std::cerr << "usage: quorel-check LIBRARY MODULE [--flow NAME] [--weight-level N]\n";
  return 2;
}

const char *orDash(const char *text) { return text != nullptr ? text : "-"; }

void printProblem(std::ostream &out, const quorel::PlausiProblem &problem) {
  out << "Problem " << orDash(problem.getId()) << " (Typ " << problem.getType() << ", Gewicht "
      << problem.getWeight() << "): " << orDash(problem.getShortDescription()) << "\n";
  if (problem.getLongDescription() != nullptr) out << "  " << problem.getLongDescription() << "\n";
  out << "  Abschnitte:";
  for (std::int32_t i = 0; i < problem.getNumOfPlausiSections(); ++i) {
    out << (i == 0 ? " " : " < ") << problem.getPlausiSection(i);
  }
  out << "\n";
}

}  // namespace

int main(int argc, char **argv) {
  if (argc < 3) return usage();
  const char *library = argv[1];
  const char *module = argv[2];
  const char *flow = nullptr;
  std::int32_t weightLevel = 1;
  for (int i = 3; i < argc; ++i) {
    if (std::strcmp(argv[i], "--flow") == 0 && i + 1 < argc) {
      flow = argv[++i];
    } else if (std::strcmp(argv[i], "--weight-level") == 0 && i + 1 < argc) {
      weightLevel = static_cast<std::int32_t>(std::atoi(argv[++i]));
    } else {
      return usage();
    }
  }

  quorel::PlausiLoader loader;
  quorel::Plausi *plausi = nullptr;
  try {
    plausi = loader.loadPlausi(library, module);
  } catch (const quorel::PlausiException &e) {
    std::cerr << "quorel-check: cannot load module " << module << " (" << e.getType()
              << "): " << e.getMessage() << "\n";
    return 2;
  }

  int status = 0;
  {
    quorel::PlausiContext context(nullptr);
    if (flow != nullptr) context.setFlow(flow);
    context.setProblemWeightLevel(weightLevel);
    try {
      plausi->perform(&context);
    } catch (const quorel::PlausiException &e) {
      std::cerr << "quorel-check: run failed (" << e.getType() << "): " << e.getMessage() << "\n";
      status = 2;
    }
    for (std::int32_t i = 0; i < context.getNumOfProblems(); ++i) {
      printProblem(std::cout, *context.getProblem(i));
    }
    std::cout << context.getNumOfProblems() << " problem(s), "
              << (context.isOk() ? "ok" : "not ok") << "\n";
    if (status == 0 && !context.isOk()) status = 1;
  }
  loader.unloadPlausi(plausi, module);
  return status;
}
