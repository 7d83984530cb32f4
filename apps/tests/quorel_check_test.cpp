// quorel-check end to end: each test runs the program as a user would, on
// input made to show one fault, and reads its output, its messages and its
// exit status. A record is checked or reported as not checked with its line;
// a mistake of the user's is named once, before any record is checked.

#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace {

const std::string kData = QUOREL_EXAMPLE_DATA;
const std::string kWork = QUOREL_TEST_WORK;
const std::string kAntrag = std::string(QUOREL_ANTRAG_MODULE) + " Antrag ";
const std::string kFaults = std::string(QUOREL_FAULT_MODULE) + " Stoerung ";
const std::string kGemeinden = "--material Gemeinden=" + kData + "/gemeinden.csv ";

std::string contents(const std::string &file) {
  std::ifstream in(file, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

// A file of the test's own in the work folder; its path.
std::string write(const std::string &name, const std::string &text) {
  mkdir(kWork.c_str(), 0755);
  std::string path = kWork + "/" + name;
  std::ofstream(path, std::ios::binary) << text;
  return path;
}

std::size_t count(const std::string &text, const std::string &part) {
  std::size_t n = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++n;
  return n;
}

struct Ran {
  int status;
  std::string out;
  std::string err;
};

// Runs quorel-check with the arguments (shell words); prefix goes before the
// program (VAR=value settings).
Ran check(const std::string &arguments, const std::string &prefix = "") {
  std::string errFile = write("stderr.txt", "");
  std::string command = prefix + " " + QUOREL_CHECK + " " + arguments + " 2>" + errFile;
  FILE *pipe = popen(command.c_str(), "r");
  std::string out;
  char buffer[4096];
  for (std::size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) out.append(buffer, n);
  int status = pclose(pipe);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, out, contents(errFile)};
}

TEST(FlowTest, TheFirstDeclaredFlowIsTheDefaultAndAModuleWithoutFlowsNeedsOne) {
  Ran antrag = check(kGemeinden + kAntrag + kData + "/antraege.csv");
  EXPECT_EQ(1, antrag.status) << antrag.err;
  EXPECT_EQ(contents(kData + "/antraege.expected.txt"), antrag.out);
  // The Umfrage module declares Pruefung first; Antworten checks less.
  std::string umfrage = std::string(QUOREL_UMFRAGE_MODULE) + " Umfrage " + kData + "/umfragen.csv";
  EXPECT_EQ(check("--flow Pruefung " + umfrage).out, check(umfrage).out);
  EXPECT_NE(check("--flow Antworten " + umfrage).out, check(umfrage).out);

  std::string records = write("flowless.csv", "Stoerung.Zahl\n5\n");
  Ran none = check(kFaults + records);
  EXPECT_EQ(2, none.status);
  EXPECT_EQ("", none.out);
  EXPECT_EQ("quorel-check: module Stoerung declares no flows, so it has no default flow: name the flow to run with "
            "--flow NAME\n",
            none.err);
}

TEST(MaterialTest, GivenMaterialsAreCheckedAgainstTheModulesOnceAtStartUp) {
  std::string records = write("regions.csv", "Stoerung.Region\nNord\nSued\nNord\n");
  std::string regions = write("regionen.csv", "Regionen.Name\nNord\nWest\n");
  std::string flow = "--flow Pruefung ";
  std::string missing = "module Stoerung queries the material Regionen, which is not given: pass --material "
                        "Regionen=FILE";
  Ran none = check(flow + kFaults + records);
  EXPECT_EQ(2, none.status);
  EXPECT_EQ("", none.out);
  EXPECT_EQ("quorel-check: " + missing + "\n", none.err);

  // A near miss is both unused and leaves the material missing.
  Ran typo = check(flow + "--material Region=" + regions + " " + kFaults + records);
  EXPECT_EQ(2, typo.status);
  EXPECT_EQ("quorel-check: warning: material Region is given, but module Stoerung queries no material of that name "
            "(its materials: Regionen)\nquorel-check: " + missing + "\n",
            typo.err);

  // Unused beside the right one: a warning, and under --strict an error.
  std::string both = "--material Regionen=" + regions + " --material Kreise=" + regions + " ";
  Ran unused = check(flow + both + kFaults + records);
  EXPECT_EQ(1, unused.status) << unused.err;
  EXPECT_EQ(1u, count(unused.err, "warning: material Kreise is given, but module Stoerung"));
  EXPECT_EQ(1u, count(unused.out, ": error STO-02"));
  Ran strict = check(flow + "--strict " + both + kFaults + records);
  EXPECT_EQ(2, strict.status);
  EXPECT_EQ("", strict.out);
  EXPECT_EQ(0u, count(strict.err, "warning"));
  EXPECT_EQ(1u, count(strict.err, "quorel-check: material Kreise is given, but"));

  // The same name twice would double every row of the table.
  Ran twice = check(flow + "--material Regionen=" + regions + " --material Regionen=" + regions + " " + kFaults +
                    records);
  EXPECT_EQ(2, twice.status);
  EXPECT_EQ("", twice.out);
  EXPECT_EQ("quorel-check: material Regionen is given more than once\n", twice.err);
}

TEST(RuleExceptionTest, AnExceptionOfRuleCodeFailsItsRecordAndTheRunGoesOn) {
  std::string records = write("exceptions.csv",
                              "Stoerung.Zahl;Stoerung.Wunsch\n5;\nabc;\n12;\n;Speicher\n7;\n");
  std::string regions = write("regionen.csv", "Regionen.Name\nNord\n");
  for (const char *jobs : {"1", "3"}) {
    Ran run = check("--flow Pruefung --jobs " + std::string(jobs) + " --material Regionen=" + regions + " " + kFaults +
                    records);
    EXPECT_EQ(2, run.status) << run.err;
    EXPECT_EQ(1u, count(run.out, "3: not checked: exception std::invalid_argument: stoi\n")) << run.out;
    EXPECT_EQ(1u, count(run.out, "4: error STO-01")) << run.out;
    EXPECT_EQ(1u, count(run.out, "5: not checked: exception std::bad_alloc: std::bad_alloc\n")) << run.out;
    EXPECT_EQ(1u, count(run.out, "5 records: 3 checked, 2 not checked; 1 problem, 1 error\n")) << run.out;
  }
}

}  // namespace
