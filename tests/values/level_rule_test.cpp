#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/values/value.h"

namespace quorel {
namespace {

// A value of a chosen level that records which of its ...Impl was asked and
// with which operand.
class RecordingValue : public Value {
 public:
  RecordingValue(OperatorLevel level, std::vector<std::string> *log, const char *name)
      : level_(level), log_(log), name_(name) {}

  bool isNil() override { return false; }
  bool isValid() override { return true; }
  bool isRange() override { return false; }
  const char *asString() override { return name_; }
  std::int64_t asInteger() override { return 0; }
  double asReal() override { return 0; }
  bool asBool() override { return false; }
  std::tm *asDate() override { return nullptr; }
  ValueIterator *asRange() override { return nullptr; }
  OperatorLevel getOperatorLevel() override { return level_; }
  Value *copy() override { return new RecordingValue(level_, log_, name_); }

 protected:
  bool eqImpl(Value *o) override { return note("eq", o); }
  bool neImpl(Value *o) override { return note("ne", o); }
  bool gtImpl(Value *o) override { return note("gt", o); }
  bool geImpl(Value *o) override { return note("ge", o); }
  bool ltImpl(Value *o) override { return note("lt", o); }
  bool leImpl(Value *o) override { return note("le", o); }
  bool containsImpl(Value *o) override { return note("contains", o); }

 private:
  bool note(const char *op, Value *other) {
    log_->push_back(std::string(name_) + "." + op + "(" + other->asString() + ")");
    return true;
  }

  OperatorLevel level_;
  std::vector<std::string> *log_;
  const char *name_;
};

TEST(LevelRuleTest, HigherRightOperandDecidesWithMirroredOrder) {
  std::vector<std::string> log;
  RecordingValue text(STRING_LEVEL, &log, "text");
  RecordingValue date(DATE_LEVEL, &log, "date");
  text.eq(&date);
  text.ne(&date);
  text.gt(&date);
  text.ge(&date);
  text.lt(&date);
  text.le(&date);
  text.contains(&date);
  EXPECT_EQ((std::vector<std::string>{"date.eq(text)", "date.ne(text)", "date.lt(text)",
                                      "date.le(text)", "date.gt(text)", "date.ge(text)",
                                      "text.contains(date)"}),
            log);
}

TEST(LevelRuleTest, LeftOperandDecidesOnTiesAndWhenHigher) {
  std::vector<std::string> log;
  RecordingValue left(NUMBER_LEVEL, &log, "left");
  RecordingValue right(NUMBER_LEVEL, &log, "right");
  RecordingValue low(STRING_LEVEL, &log, "low");
  left.eq(&right);
  right.gt(&left);
  left.le(&low);
  EXPECT_EQ((std::vector<std::string>{"left.eq(right)", "right.gt(left)", "left.le(low)"}), log);
}

}  // namespace
}  // namespace quorel
