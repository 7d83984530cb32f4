// ProblemPrinter: the problems of checked records, as readable text or as
// JSON Lines (one object per problem, then one summary object). Texts from
// the library are Windows-1252 and are written as UTF-8.

#ifndef QUOREL_HOST_PROBLEM_PRINTER_H_
#define QUOREL_HOST_PROBLEM_PRINTER_H_

#include <ostream>
#include <string>

#include <quorel/quorel.h>

namespace quorel {
namespace host {

// Windows-1252 bytes as UTF-8.
std::string toUtf8(const char *text);
// A JSON string literal of a Windows-1252 text, or null for a null text.
std::string jsonString(const char *text);

class ProblemPrinter {
 public:
  ProblemPrinter(std::ostream &out, bool json) : out_(out), json_(json) {}

  // The problems of the record that began on line.
  void printRecord(int line, const quorel::PlausiContext &context);
  // A record that could not be checked.
  void printFailure(int line, const std::string &message);
  void printSummary(int records, int failed, int problems, int errors);

 private:
  std::ostream &out_;
  bool json_;
};

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_PROBLEM_PRINTER_H_
