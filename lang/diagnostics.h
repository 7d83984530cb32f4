// Diagnostics: the mistakes found in one rule file, each with its place.
//
// Every message is English and is told as
//   FILE:LINE:COLUMN: error: MESSAGE
//   the source line
//   a caret under the column
// Reading goes on after a mistake, so one pass tells all of them; a rule
// file with any error is never run.

#ifndef QUOREL_LANG_DIAGNOSTICS_H_
#define QUOREL_LANG_DIAGNOSTICS_H_

#include <string>
#include <vector>

#include "quorel/lang/position.h"

namespace quorel {
namespace lang {

struct Diagnostic {
  Position pos;
  std::string message;  // UTF-8
};

class Diagnostics {
 public:
  Diagnostics() = default;

  // The file name shown in messages and the text whose lines they quote
  // (UTF-8 or Windows-1252, as read).
  void setSource(const std::string &file, const std::string &text);
  const std::string &file() const { return file_; }

  void error(Position pos, const std::string &message);

  // Forgets the errors after the first count, those of a reading that the
  // parser tried and gave up.
  void forgetAfter(std::size_t count) {
    if (count < errors_.size()) errors_.resize(count);
  }

  bool empty() const { return errors_.empty(); }
  std::size_t size() const { return errors_.size(); }
  const std::vector<Diagnostic> &errors() const { return errors_; }

  // All errors in the order of their places, each as three lines.
  std::string format() const;

 private:
  std::string file_;
  std::vector<std::string> lines_;  // UTF-8
  std::vector<Diagnostic> errors_;
};

}  // namespace lang
}  // namespace quorel

#endif  // QUOREL_LANG_DIAGNOSTICS_H_
