// The whole public interface of quorel in one include.

#ifndef QUOREL_QUOREL_H_
#define QUOREL_QUOREL_H_

#include "quorel/logging/logger.h"
#include "quorel/masks/util.h"
#include "quorel/model/field_type.h"
#include "quorel/rules/classification_ressource.h"
#include "quorel/rules/init_params.h"
#include "quorel/rules/mapping.h"
#include "quorel/rules/plausi.h"
#include "quorel/rules/plausi_context.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/rules/plausi_loader.h"
#include "quorel/rules/plausi_problem.h"
#include "quorel/rules/plausi_section.h"
#include "quorel/rules/problem_type.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/inconvertible_value.h"
#include "quorel/values/invalid_value.h"
#include "quorel/values/nil_value.h"
#include "quorel/values/plausi_object.h"
#include "quorel/values/single_value_iterator.h"
#include "quorel/values/value.h"
#include "quorel/values/value_iterator.h"

#endif  // QUOREL_QUOREL_H_
