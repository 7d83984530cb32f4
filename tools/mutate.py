#!/usr/bin/python3
"""Mutation testing of the quorel library: do the tests catch small faults?

Each mutant below is one small fault of the kind that slips through review: a
comparison flipped, a constant moved by one, a guard dropped, a word swapped.
It names a source file, a text that occurs exactly once in it and the text
that replaces it. For each mutant the script applies the change, rebuilds
incrementally, runs the test suite until its first failure and restores the
file, whatever happens (an error, Ctrl-C or SIGTERM included). A mutant that
some test fails on is "killed"; one that the whole suite passes "survived".
A mutant whose text is no longer in its file (the code moved on) is "stale",
and one that does not compile is "broken"; neither counts in the score.

    /usr/bin/python3 tools/mutate.py                # all mutants
    /usr/bin/python3 tools/mutate.py --list         # the list, with stale ones marked
    /usr/bin/python3 tools/mutate.py --only masks fn-affix-whole

The build directory (default build-mutate/) is configured as a Release build
with ccache when it does not exist yet. A backup of the file under mutation
is kept in it while a mutant runs, so that a run killed outright is repaired
at the start of the next.
"""

import argparse
import os
import re
import shutil
import signal
import subprocess
import sys
import time
from dataclasses import dataclass


@dataclass
class Mutant:
    name: str
    file: str
    find: str
    replace: str
    what: str

    @property
    def subsystem(self):
        return self.file.split("/")[1]


def M(name, file, find, replace, what):
    return Mutant(name, "quorel/" + file, find, replace, what)


MUTANTS = [
    # Built-in functions.
    M("fn-workday-saturday", "functions/date_functions.cpp",
      "return day >= 1 && day <= 5;", "return day >= 1 && day <= 6;",
      "Saturday counts as a working day"),
    M("fn-workday-weeks", "functions/date_functions.cpp",
      "std::int64_t weeks = (left - 1) / 5;", "std::int64_t weeks = left / 5;",
      "working-day shift jumps whole weeks without regard to the start day"),
    M("fn-month-carry", "functions/date_functions.cpp",
      "-((11 - months) / 12)", "-((12 - months) / 12)",
      "backward month shift carries one year too many at multiples of 12"),
    M("fn-years-complete", "functions/date_functions.cpp",
      "return Util::compareDate(&to, &shifted) >= 0 ? candidate : candidate - 1;",
      "return Util::compareDate(&to, &shifted) > 0 ? candidate : candidate - 1;",
      "a year reached to the day does not count"),
    M("fn-november-30", "functions/calendar.cpp",
      "case 3: case 5: case 8: case 10: return 30;", "case 3: case 5: case 8: return 30;",
      "November has 31 days in date shifts"),
    M("fn-century-leap", "functions/calendar.cpp",
      "return year % 400 == 0 || (year % 4 == 0 && year % 100 != 0);", "return year % 4 == 0;",
      "every fourth year is a leap year, centuries too"),
    M("fn-modulo-min", "functions/numeric_functions.cpp",
      "std::int64_t remainder = divisor == -1 ? 0 : dividend % divisor;",
      "std::int64_t remainder = dividend % divisor;",
      "MODULO by -1 without its overflow guard"),
    M("fn-log-zero", "functions/numeric_functions.cpp",
      "v->asReal() <= 0.0", "v->asReal() < 0.0",
      "logarithms accept 0"),
    M("fn-round-symmetric", "functions/numeric_functions.cpp",
      "truncateToInteger(v->asReal() + 0.5)", "truncateToInteger(std::round(v->asReal()))",
      "ALS_GANZZAHL rounds negative halves away from zero"),
    M("fn-max-first", "functions/numeric_functions.cpp",
      "if (value > best->asReal()) best = candidate;", "if (value >= best->asReal()) best = candidate;",
      "the last of equal maxima wins"),
    M("fn-affix-whole", "functions/text_functions.cpp",
      "if (affixLength > textLength) return false;", "if (affixLength >= textLength) return false;",
      "an affix as long as the whole text is refused"),
    M("fn-numeric-zero", "functions/text_functions.cpp",
      "digits = *p >= '0' && *p <= '9';", "digits = *p >= '1' && *p <= '9';",
      "NUMERISCH does not take the digit 0"),
    M("fn-upper-ue", "functions/text_functions.cpp",
      "    case 0xFC: return 0xDC;\n", "",
      "GROSSBUCHSTABEN leaves the umlaut u"),
    M("fn-conform-free", "functions/format_checks.cpp",
      "    case FieldTypeFree:\n      value->asString();\n      return true;",
      "    case FieldTypeFree:\n      return true;",
      "a free field conforms without reading the value"),
    M("fn-format-guard", "functions/format_checks.cpp",
      "if (!pattern->isUsable() || !text->isUsable())", "if (!pattern->isUsable())",
      "HAT_FORMAT reads a text that is not usable"),
    M("fn-round-half", "functions/numeric_functions.cpp",
      "double half = v->asReal() < 0.0 ? -0.5 : 0.5;", "double half = 0.5;",
      "RUNDEN rounds negative halves toward zero"),
    M("fn-minus-negate", "functions/operators.cpp",
      "if (bUsable) return runtime->createNumberValue(b->asReal() * -1.0);", "if (bUsable) return b;",
      "minus of a missing value and b gives b unnegated"),
    M("fn-div-order", "functions/operators.cpp",
      "  checkDivisor(b);\n  if (!a->isUsable()) return runtime->createInvalidValue();\n  double dividend",
      "  if (!a->isUsable()) return runtime->createInvalidValue();\n  checkDivisor(b);\n  double dividend",
      "div tests the dividend before the divisor"),

    # Masks and Util.
    M("mk-november-31", "masks/date_mask.cpp",
      "case 3: case 5: case 8: case 10:\n      if (day == 31)", "case 3: case 5: case 8:\n      if (day == 31)",
      "31 November is a valid date"),
    M("mk-year-1900", "masks/date_mask.cpp",
      "{&std::tm::tm_year, -1900, 1900, 0x7FFFFFFF,", "{&std::tm::tm_year, -1900, 1901, 0x7FFFFFFF,",
      "the year 1900 is out of range"),
    M("mk-century-leap", "masks/date_mask.cpp",
      "return year % 400 == 0 || (year % 4 == 0 && year % 100 != 0);", "return year % 4 == 0;",
      "29 February of a century year is valid"),
    M("mk-hour-24", "masks/date_mask.cpp",
      "{&std::tm::tm_hour, 0, 0, 23,", "{&std::tm::tm_hour, 0, 0, 24,",
      "the hour 24 is valid"),
    M("mk-minute-60", "masks/date_mask.cpp",
      "{&std::tm::tm_min, 0, 0, 59,", "{&std::tm::tm_min, 0, 0, 60,",
      "the minute 60 is valid"),
    M("mk-date-length", "masks/date_mask.cpp",
      "if (!reader.endsAt(position)) fail(kWrongLength);", "",
      "a date value longer than its mask passes"),
    M("mk-short-element", "masks/date_mask.cpp",
      "if (i > 0 && value.endsAt(*position)) fail(element.wrongLength);",
      "if (i > 1 && value.endsAt(*position)) fail(element.wrongLength);",
      "a value ending after one digit reports invalid characters, not the length"),
    M("mk-align-mmm", "masks/date_mask.cpp",
      "if (run % 2 == 1) return mask + 1;", "if (run == 1) return mask + 1;",
      "only a single M aligns, not an odd run"),
    M("mk-jj-width", "masks/date_mask.cpp",
      'out.appendNumber("%02lld", (year % 100 + 100) % 100);', 'out.appendNumber("%lld", (year % 100 + 100) % 100);',
      "JJ writes a year below 10 with one digit"),
    M("mk-number-max", "masks/number_mask.cpp",
      "if (count >= parsed.integer.maxDigits ||", "if (count > parsed.integer.maxDigits ||",
      "an integer takes one digit more than its mask"),
    M("mk-group-size", "masks/number_mask.cpp",
      "if (group != 3) fail(kBadThousands);", "if (group < 3) fail(kBadThousands);",
      "thousand groups of four digits pass"),
    M("mk-integer-min", "masks/number_mask.cpp",
      "isInteger ? part->positions - part->beforeMarker :", "isInteger ? part->positions - part->beforeMarker - 1 :",
      "the mandatory integer stretch is one short"),
    M("mk-fraction-min", "masks/number_mask.cpp",
      ": part->beforeMarker;", ": part->beforeMarker - 1;",
      "the mandatory fraction stretch is one short"),
    M("mk-decimal-last", "masks/number_mask.cpp",
      "if (p[1] == '\\0') fail(kBadDecimal);", "",
      "a comma at the end of a real passes"),
    M("mk-text-escaped-c", "masks/text_mask.cpp",
      "bool any = element == 'c' && !escaped;", "bool any = element == 'c';",
      "an escaped c in a text mask takes any character"),
    M("mk-substring-length", "masks/util.cpp",
      "std::int64_t end = length < 1 ? size : from + length;", "std::int64_t end = length < 0 ? size : from + length;",
      "substring of length 0 is empty instead of the rest"),
    M("mk-upper-sz", "masks/util.cpp",
      "|| u == 0xFC || u == 0xDF);", "|| u == 0xFC);",
      "isUpperCase takes the sharp s"),
    M("mk-tolerance-cap", "masks/util.cpp",
      "if (tolerance >= 0.5) tolerance = 0.4999999999;", "",
      "the tolerance of compareNumbers grows without a cap"),
    M("mk-tiny-equal", "masks/util.cpp",
      "if (m < 4e-16) return 0;", "if (m <= 4e-16) return 0;",
      "4e-16 itself counts as zero"),

    # Values.
    M("va-mirror-gt", "values/value.cpp",
      "return otherDecides(other) ? other->ltImpl(this) : gtImpl(other);",
      "return otherDecides(other) ? other->gtImpl(this) : gtImpl(other);",
      "gt is not mirrored when the right operand decides"),
    M("va-number-bool", "values/number_value.cpp",
      "bool NumberValue::asBool() { return asReal() == 1.0; }",
      "bool NumberValue::asBool() { return Util::compareNumbers(asReal(), 1.0) == 0; }",
      "a number near 1 is true"),
    M("va-truth-case", "values/string_value.cpp",
      'platform::compareIgnoringCase(text_.c_str(), "WAHR") == 0', 'std::strcmp(text_.c_str(), "WAHR") == 0',
      "the truth word WAHR is read in upper case only"),
    M("va-interval-first", "values/interval_range.cpp",
      "bool includesFirst(IntervalType type) { return type == INCLUDE_BOTH || type == INCLUDE_FIRST; }",
      "bool includesFirst(IntervalType type) { return type == INCLUDE_BOTH; }",
      "INCLUDE_FIRST leaves out its first value"),
    M("va-sequence-first", "values/sequence_range.cpp",
      "bool rising = first->lt(second) && first->le(x) && last->ge(x);",
      "bool rising = first->lt(second) && first->lt(x) && last->ge(x);",
      "a rising sequence does not contain its first value"),
    M("va-sequence-last", "values/sequence_range.cpp",
      "return step_ > 0.0 ? current_ <= last_ : current_ >= last_;",
      "return step_ > 0.0 ? current_ < last_ : current_ >= last_;",
      "a rising walk stops before its last value"),
    M("va-sequence-valid", "values/sequence_range.cpp",
      "if (second->gt(first) && last->lt(second)) {", "if (second->gt(first) && last->le(second)) {",
      "a sequence whose last value is its second is refused"),
    M("va-date-nil", "values/date_value.cpp",
      "bool DateValue::eqImpl(Value *other) {\n  if (other->isNil() || !other->isValid()) return false;",
      "bool DateValue::eqImpl(Value *other) {\n  if (!other->isValid()) return false;",
      "a date compared for equality with a nil value reads its date"),
    M("va-range-length", "values/range.cpp",
      "return !mine->hasNext() && !theirs->hasNext();", "return true;",
      "ranges of different lengths compare like equal ones"),
    M("va-string-le", "values/string_value.cpp",
      "bool StringValue::leImpl(Value *other) { return compareTo(other) <= 0; }",
      "bool StringValue::leImpl(Value *other) { return compareTo(other) < 0; }",
      "equal texts are not le"),

    # Data model.
    M("mo-iterator-end", "model/field_array_iterator.cpp",
      "if (indices_[d] < size - 1) {", "if (indices_[d] < size) {",
      "an array walk goes one element past the end"),
    M("mo-declared-size", "model/field_descriptor.cpp",
      "if (declared != 0) return declared;", "if (declared >= 0) return declared;",
      "a dimension stored per record reads as 0"),
    M("mo-read-rethrow", "model/field_read.cpp",
      "if (e.getType() != EXCEPTION_CONVERSION) throw;", "",
      "every failure of a field read becomes an inconvertible value"),
    M("mo-mask-text", "model/field.cpp",
      "bool asText = type->getMask() != nullptr;", "bool asText = false;",
      "a number field with a mask is read as a number, not as its text"),
    M("mo-set-nil", "model/field.cpp",
      "  if (value->isNil()) return;\n  DataRecord *target", "  DataRecord *target",
      "Field::set writes a nil value"),
    M("mo-path-first", "model/topic.cpp",
      "first(static_cast<std::size_t>(dimensions), 0);", "first(static_cast<std::size_t>(dimensions), 1);",
      "a path segment without indices names the second element"),
    M("mo-element-guard", "model/field_array.cpp",
      "if (!Util::isValidElementAccess(getDimension(), indices)) {",
      "if (Util::getSizeOf(indices) > Util::getSizeOf(getDimension())) {",
      "a field array takes too few indices as an element"),
    M("mo-local-size", "model/local_array.cpp",
      "return dimension[Util::getSizeOf(indices)];", "return dimension[0];",
      "a local array answers the size of its first dimension at every depth"),

    # Rule execution.
    M("ru-outermost", "rules/plausi_section.cpp",
      "if (p->checkProc_) target = p;", "if (p->checkProc_) {\n      target = p;\n      break;\n    }",
      "a field read is noted at the innermost check procedure"),
    M("ru-called-from", "rules/plausi_section.cpp",
      "for (const PlausiSection *p = parent_; p != nullptr; p = p->parent_) {\n    if (p->checkProc_) return true;",
      "for (const PlausiSection *p = this; p != nullptr; p = p->parent_) {\n    if (p->checkProc_) return true;",
      "a check procedure counts as called from one"),
    M("ru-indent", "rules/runtime_context.cpp",
      'indentation(depth()) << "<-- "', 'indentation(depth() + 1) << "<-- "',
      "a leaving section is traced one step deeper than its entry"),
    M("ru-fields-once", "rules/runtime_context.cpp",
      "if (field != nullptr && added.insert(field).second)", "if (field != nullptr)",
      "a problem lists a field once per read"),
    M("ru-count-type", "rules/plausi_context.cpp",
      "if (problem->getType() == type) ++count;", "if (problem->getType() != type) ++count;",
      "problems counted by the wrong type"),

    # Material queries.
    M("ma-tuple-length", "material/material.cpp",
      "if (values.getNumOfValues() != fields_->getNumOfFields()) {",
      "if (values.getNumOfValues() > fields_->getNumOfFields()) {",
      "a tuple shorter than the field set reaches the host"),
    M("ma-available", "material/material.cpp",
      "if (access == nullptr || !access->isMaterialAvailable(material)) {", "if (access == nullptr) {",
      "an unavailable material is queried"),
    M("ma-walk-order", "material/material.cpp",
      "  for (std::int32_t r = 0; r < records.getNumOfDataRecords(); ++r) {\n"
      "    for (std::int32_t f = 0; f < fields_->getNumOfFields(); ++f) {\n      Field *field",
      "  for (std::int32_t f = 0; f < fields_->getNumOfFields(); ++f) {\n"
      "    for (std::int32_t r = 0; r < records.getNumOfDataRecords(); ++r) {\n      Field *field",
      "a material walk goes field by field instead of record by record"),
    M("ma-debug-count", "material/material.cpp",
      '"Material::asRange() => records = " << records->getNumOfDataRecords()',
      '"Material::asRange() => records = " << fields_->getNumOfFields()',
      "the debug line counts fields, not records"),

    # Pattern engine.
    M("pa-greedy-max", "pattern/nfa_nodes.cpp",
      "std::int32_t limit = most < available ? most : available;",
      "std::int32_t limit = most < available ? most + 1 : available;",
      "a greedy quantifier on one character takes one more than its maximum"),
    M("pa-group-max", "pattern/nfa_nodes.cpp",
      "if (count >= max_) return goOn(input, matcher, position);\n  switch (kind_)",
      "if (count > max_) return goOn(input, matcher, position);\n  switch (kind_)",
      "a quantified group repeats once more than its maximum"),
    M("pa-lazy-max", "pattern/nfa_nodes.cpp",
      "for (std::int32_t count = min_; count < max_; ++count) {\n    std::int32_t result = goOn",
      "for (std::int32_t count = min_; count <= max_; ++count) {\n    std::int32_t result = goOn",
      "a reluctant quantifier takes one more than its maximum"),
    M("pa-ci-quote", "platform/case_compare.cpp",
      "return (c >= 'A' && c <= 'Z') ?", "return (c >= 'A' && c < 'Z') ?",
      "a quoted text under case folding does not fold Z"),
    M("pa-line-terminator", "pattern/nfa_nodes.cpp",
      "bool isLineTerminator(char c) { return c == '\\n' || c == '\\r'; }",
      "bool isLineTerminator(char c) { return c == '\\n'; }",
      "a carriage return ends no line"),
    M("pa-word-letter", "pattern/nfa_nodes.cpp",
      "(c >= 'a' && c <= 'z'); }", "(c >= 'a' && c < 'z'); }",
      "z is no letter at a word boundary"),
    M("pa-hex", "pattern/pattern_classes.cpp",
      "if (c >= 'a' && c <= 'f') return c - 'a' + 10;", "if (c >= 'a' && c < 'f') return c - 'a' + 10;",
      "the hex digit f is not read in lower case"),
    M("pa-range-upper", "pattern/pattern_classes.cpp",
      "return ByteSet::range(lower, static_cast<unsigned char>(u));",
      "return ByteSet::range(lower, static_cast<unsigned char>(u - 1));",
      "a class range leaves out its upper end"),
    M("pa-optional", "pattern/pattern.cpp",
      "case '?': *minimum = 0; *maximum = 1;", "case '?': *minimum = 0; *maximum = 2;",
      "? takes two"),

    # Lifetimes of runs, walks, scopes and kept state.
    M("li-saturate-edge", "values/number_value.cpp",
      "if (number >= kLimit) return", "if (number > kLimit) return",
      "2^63 itself is converted instead of saturating"),
    M("li-scope-any-number", "rules/module_support.cpp",
      "if (open == nullptr || open->getNumber() != own) return;", "if (open == nullptr) return;",
      "a scope leaves a later section when its own is gone"),
    M("li-walk-keeps-range", "values/sequence_range.cpp",
      "  keeper_ = keeper;\n  shared_.reset();", "  (void)keeper;",
      "a walk's numbers stay with the range whoever owns the walk"),
    M("li-chain-keeper", "values/iterator_iterator.cpp",
      "if (keeper_ != nullptr) iterator->keepDeliveredIn(keeper_);", "",
      "iterators added to a chain later keep their numbers with their range"),
    M("li-rehash", "model/field_descriptor.cpp",
      "if (hierarchyHash_) reindexings_.fetch_add(1, std::memory_order_relaxed);", "",
      "new indices leave the hashes kept below the descriptor"),
    M("li-cache-closed", "pattern/pattern_cache.cpp",
      "    cacheClosed = true;\n", "",
      "a match after the thread's cache is gone makes the cache again"),
    M("li-contains-count", "material/material.cpp",
      "if (values.getNumOfValues() != fields_->getNumOfFields()) {",
      "if (values.getNumOfValues() < fields_->getNumOfFields()) {",
      "a material accepts more values than it has fields"),

    # Logging.
    M("lo-month", "logging/logger.cpp",
      "t.tm_mday, t.tm_mon + 1,", "t.tm_mday, t.tm_mon,",
      "the month of the time stamp counts from 0"),
    M("lo-word-swap", "logging/logger.cpp",
      'case TRACE: return "TRACE";\n    case DEBUG: return "DEBUG";',
      'case TRACE: return "DEBUG";\n    case DEBUG: return "TRACE";',
      "the words of TRACE and DEBUG swapped in the start line"),
    M("lo-word-beyond", "logging/logger.cpp",
      'default: return "";', 'default: return "DEBUG";',
      "a level beyond DEBUG is named DEBUG in the start line"),
    M("lo-off", "logging/logger.cpp",
      "if (level_ <= OFF) return;", "if (level_ < OFF) return;",
      "level 0 writes a start line"),
    M("lo-stop-break", "logging/logger.cpp",
      '*target_ << std::endl << "STOP : ";', '*target_ << "STOP : ";',
      "the stop line follows the last line without a break"),
    M("lo-line-level", "logging/logger.cpp",
      'return startLine(INFO, "INFO : ");', 'return startLine(TRACE, "INFO : ");',
      "info lines need the trace level"),
]

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
BACKUP_NAME = "mutate-backup"


class Interrupted(Exception):
    pass


def on_signal(signum, frame):
    raise Interrupted(f"signal {signum}")


def read(path):
    with open(path, "rb") as f:
        return f.read().decode("latin-1")


def write(path, text):
    with open(path, "wb") as f:
        f.write(text.encode("latin-1"))
    # A restored file must look newer than the objects built from the mutant.
    os.utime(path, None)


def occurrences(mutant):
    path = os.path.join(ROOT, mutant.file)
    if not os.path.exists(path):
        return 0
    return read(path).count(mutant.find)


def run(command, cwd, timeout=None, env=None):
    try:
        done = subprocess.run(command, cwd=cwd, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              timeout=timeout, env=env, errors="replace", text=True)
        return done.returncode, done.stdout
    except subprocess.TimeoutExpired as e:
        out = e.stdout.decode("latin-1") if isinstance(e.stdout, bytes) else (e.stdout or "")
        return -1, out + "\n[timed out]"


def configure(build):
    if os.path.exists(os.path.join(build, "CMakeCache.txt")):
        return
    command = ["cmake", "-S", ROOT, "-B", build, "-DCMAKE_BUILD_TYPE=Release", "-DQUOREL_BUILD_BENCH=OFF"]
    if shutil.which("ccache"):
        command.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
    code, out = run(command, ROOT)
    if code != 0:
        sys.exit("configure failed:\n" + out)


def build(build_dir, jobs):
    return run(["cmake", "--build", build_dir, "-j", str(jobs)], ROOT)


FAILED_TEST = re.compile(r"Test\s+#\d+:\s+(\S+)\s+\.*\**\s*(Failed|Timeout|Exception|Subprocess|Not Run|SEGFAULT)")


def test(build_dir, jobs, timeout):
    """Runs the suite up to its first failure; gives (passed, first failing test)."""
    code, out = run(["ctest", "--test-dir", build_dir, "-j", str(jobs), "--stop-on-failure",
                     "--timeout", str(timeout)], ROOT)
    if code == 0:
        return True, ""
    match = FAILED_TEST.search(out)
    if match:
        return False, match.group(1)
    lines = out.strip().splitlines()
    return False, lines[-1] if lines else "?"


def restore_leftover(build_dir):
    """Puts back a file that a run killed outright left mutated."""
    backup = os.path.join(build_dir, BACKUP_NAME)
    if not os.path.exists(backup):
        return
    text = read(backup)
    path, _, original = text.partition("\n")
    write(path, original)
    os.remove(backup)
    print(f"restored {os.path.relpath(path, ROOT)} from an interrupted run")


def run_mutant(mutant, args):
    path = os.path.join(ROOT, mutant.file)
    if not os.path.exists(path):
        return "stale", "file gone"
    original = read(path)
    count = original.count(mutant.find)
    if count == 0:
        return "stale", "text not found"
    if count > 1:
        return "ambiguous", f"text found {count} times"
    backup = os.path.join(args.build_dir, BACKUP_NAME)
    write(backup, path + "\n" + original)
    try:
        write(path, original.replace(mutant.find, mutant.replace))
        code, out = build(args.build_dir, args.jobs)
        if code != 0:
            errors = [line for line in out.splitlines() if "error" in line]
            return "broken", (errors[0] if errors else "build failed")[:100]
        passed, failing = test(args.build_dir, args.jobs, args.timeout)
        return ("survived", "") if passed else ("killed", failing)
    finally:
        write(path, original)
        os.remove(backup)


def select(mutants, wanted):
    if not wanted:
        return mutants
    chosen = [m for m in mutants if any(w == m.name or w == m.subsystem or w in m.name for w in wanted)]
    if not chosen:
        sys.exit("no mutant matches " + " ".join(wanted))
    return chosen


def print_list(mutants):
    for m in mutants:
        found = occurrences(m)
        mark = "" if found == 1 else " [stale]" if found == 0 else f" [ambiguous: {found}]"
        print(f"{m.name:22} {m.file:40} {m.what}{mark}")
    print(f"{len(mutants)} mutants")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--only", nargs="*", default=[], metavar="NAME",
                        help="mutants by name, part of a name or subsystem (rules, values, ...)")
    parser.add_argument("--list", action="store_true", help="list the mutants and exit")
    parser.add_argument("--build-dir", default=os.path.join(ROOT, "build-mutate"))
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--timeout", type=int, default=120, help="seconds per test")
    parser.add_argument("--min-score", type=float, default=0.0,
                        help="exit with 1 when fewer percent of the counted mutants are killed")
    args = parser.parse_args()
    args.build_dir = os.path.abspath(args.build_dir)

    names = [m.name for m in MUTANTS]
    duplicates = {n for n in names if names.count(n) > 1}
    if duplicates:
        sys.exit("duplicate mutant names: " + ", ".join(sorted(duplicates)))
    mutants = select(MUTANTS, args.only)
    if args.list:
        print_list(mutants)
        return 0

    signal.signal(signal.SIGTERM, on_signal)
    signal.signal(signal.SIGHUP, on_signal)
    os.makedirs(args.build_dir, exist_ok=True)
    restore_leftover(args.build_dir)
    configure(args.build_dir)

    print("baseline: building and testing the unchanged library", flush=True)
    code, out = build(args.build_dir, args.jobs)
    if code != 0:
        sys.exit("the unchanged library does not build:\n" + out[-3000:])
    passed, failing = test(args.build_dir, args.jobs, args.timeout)
    if not passed:
        sys.exit(f"the unchanged library fails its tests ({failing}); fix that first")

    results = []
    try:
        for i, mutant in enumerate(mutants, 1):
            start = time.time()
            status, detail = run_mutant(mutant, args)
            seconds = time.time() - start
            results.append((mutant, status, detail))
            print(f"[{i:2}/{len(mutants)}] {mutant.name:22} {status:9} {seconds:5.0f}s  {detail}", flush=True)
    except (KeyboardInterrupt, Interrupted) as e:
        print(f"\nstopped ({e or 'Ctrl-C'}); the file under mutation is restored", flush=True)
    finally:
        # Leave the build directory built from the unchanged sources.
        build(args.build_dir, args.jobs)

    print()
    print(f"{'mutant':22} {'subsystem':10} {'result':9} {'caught by / note':45} fault")
    for mutant, status, detail in results:
        print(f"{mutant.name:22} {mutant.subsystem:10} {status:9} {detail[:45]:45} {mutant.what}")
    killed = sum(1 for _, s, _ in results if s == "killed")
    counted = sum(1 for _, s, _ in results if s in ("killed", "survived"))
    others = {s: sum(1 for _, t, _ in results if t == s) for s in ("stale", "broken", "ambiguous")}
    score = 100.0 * killed / counted if counted else 0.0
    extra = ", ".join(f"{n} {s}" for s, n in others.items() if n)
    print(f"\nscore: {killed} of {counted} mutants killed ({score:.1f}%)" + (f"; not counted: {extra}" if extra else ""))
    survivors = [m.name for m, s, _ in results if s == "survived"]
    if survivors:
        print("survived: " + " ".join(survivors))
    return 1 if score < args.min_score or len(results) < len(mutants) else 0


if __name__ == "__main__":
    sys.exit(main())
