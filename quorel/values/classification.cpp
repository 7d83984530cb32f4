#include "quorel/values/classification.h"

namespace quorel {

Classification::Classification(Value *code, const char *value) : code_(code->copy()) { value_.set(value); }

Classification::~Classification() = default;

void Classification::addClassification(Classification *child) {
  children_.emplace_back(static_cast<Classification *>(child->copy()));
}

bool Classification::isNil() { return false; }
bool Classification::isValid() { return true; }
bool Classification::isRange() { return false; }
const char *Classification::asString() { return code_->asString(); }
std::int64_t Classification::asInteger() { return code_->asInteger(); }
double Classification::asReal() { return code_->asReal(); }
bool Classification::asBool() { return code_->asBool(); }
std::tm *Classification::asDate() { return code_->asDate(); }
ValueIterator *Classification::asRange() { return code_->asRange(); }
OperatorLevel Classification::getOperatorLevel() { return CLASSIFICATION_LEVEL; }

Value *Classification::copy() {
  auto result = std::make_unique<Classification>(code_.get(), value_.get());
  for (const auto &child : children_) result->addClassification(child.get());
  return result.release();
}

bool Classification::eqImpl(Value *other) { return code_->eq(other); }
bool Classification::neImpl(Value *other) { return code_->ne(other); }
bool Classification::gtImpl(Value *other) { return code_->gt(other); }
bool Classification::geImpl(Value *other) { return code_->ge(other); }
bool Classification::ltImpl(Value *other) { return code_->lt(other); }
bool Classification::leImpl(Value *other) { return code_->le(other); }

bool Classification::containsImpl(Value *other) {
  if (children_.empty()) return code_->contains(other);
  for (const auto &child : children_) {
    if (child->contains(other)) return true;
  }
  return false;
}

}  // namespace quorel
