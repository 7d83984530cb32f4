// StringValue: a text. It owns a copy of its text and converts it anew at
// every request: numbers through the German default number mask, truth
// values from "WAHR"/"FALSCH" in any case, dates through the default date
// mask. Texts compare with texts byte by byte, bytes unsigned.

#ifndef QUOREL_VALUES_STRING_VALUE_H_
#define QUOREL_VALUES_STRING_VALUE_H_

#include <memory>
#include <string>
#include <string_view>

#include "quorel/values/object_pool.h"
#include "quorel/values/owned_text.h"
#include "quorel/values/scalar_value.h"

namespace quorel {

class StringValue : public ScalarValue {
 public:
  // A null text gives the empty text.
  explicit StringValue(const char *text);
  // The whole text, its bytes as they stand (a NUL among them too).
  explicit StringValue(std::string text);
  // The text with every byte replaced by its entry in byteMap, as the case
  // functions make their results: in place, with no text in between.
  StringValue(const char *text, const unsigned char (&byteMap)[256]);

  const char *asString() override;
  std::int64_t asInteger() override;
  double asReal() override;
  bool asBool() override;
  // The date read from the text. The tm belongs to the value and holds the
  // same date at every call, since the text never changes while anyone may
  // hold the value.
  std::tm *asDate() override;
  OperatorLevel getOperatorLevel() override;
  Value *copy() override;

 protected:
  bool eqImpl(Value *other) override;
  bool neImpl(Value *other) override;
  bool gtImpl(Value *other) override;
  bool geImpl(Value *other) override;
  bool ltImpl(Value *other) override;
  bool leImpl(Value *other) override;

 private:
  // A SimpleDataRecord that stores a text where it held one gives its value
  // the new text rather than making a new value: a host fills one record
  // row after row. The former text's value is gone by the record's terms.
  friend class SimpleDataRecord;
  void retext(std::string_view text);

  int compareTo(Value *other);

  // Made at the first asDate: few texts are read as dates, and every field
  // read makes a text, so the text stays small.
  struct KeptDate : Pooled {
    std::tm date{};
  };

  OwnedText<16> text_;
  std::unique_ptr<KeptDate> date_;
};

}  // namespace quorel

#endif  // QUOREL_VALUES_STRING_VALUE_H_
