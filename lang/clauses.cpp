#include "quorel/lang/clauses.h"

namespace quorel {
namespace lang {

const ClauseInfo (&allClauses())[kClauseIndices + 1] {
  static const ClauseInfo kClauses[kClauseIndices + 1] = {
      {kClauseText, "TEXT", &PlausiProblem::setShortDescription, "setShortDescription"},
      {kClauseDetails, "DETAILS", &PlausiProblem::setLongDescription, "setLongDescription"},
      {kClauseCorrection, "KORREKTUR", &PlausiProblem::setCorrectionInfo, "setCorrectionInfo"},
      {kClauseTopic, "THEMA", &PlausiProblem::setReferenceTopic, "setReferenceTopic"},
      {kClauseException, "AUSNAHME", &PlausiProblem::setException, "setException"},
      {kClauseDisplay, "FELDNAME", &PlausiProblem::setFieldDisplayName, "setFieldDisplayName"},
      {kClauseMask, "FELDMASKE", &PlausiProblem::setFieldMask, "setFieldMask"},
      {kClauseValueSpace, "WERTEBEREICH", &PlausiProblem::setFieldValueSpace, "setFieldValueSpace"},
      {kClauseLength, "FELDLAENGE", nullptr, "setFieldLength"},
      {kClauseInfoType, "INFOTYP", nullptr, "setInfoType"},
      {kClauseIndices, "INDIZES", nullptr, "setReferenceFieldIndices"},
  };
  return kClauses;
}

}  // namespace lang
}  // namespace quorel
