// ClassificationRessource: where a run looks up coded values. The answer is
// always a usable value owned by the resource: the classification, or an
// InvalidValue when the text is not registered.

#ifndef QUOREL_RULES_CLASSIFICATION_RESSOURCE_H_
#define QUOREL_RULES_CLASSIFICATION_RESSOURCE_H_

namespace quorel {

class Value;

class ClassificationRessource {
 public:
  virtual Value *getClassificationByCode(const char *code) = 0;
  virtual Value *getClassificationByValue(const char *value) = 0;
  virtual ~ClassificationRessource();
};

}  // namespace quorel

#endif  // QUOREL_RULES_CLASSIFICATION_RESSOURCE_H_
