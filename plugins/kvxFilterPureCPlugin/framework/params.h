// Parameters of a frame, and what an effect reports of its own.
#ifndef KVX_FRAMEWORK_PARAMS_H_
#define KVX_FRAMEWORK_PARAMS_H_

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>

#include "kvx/records.h"

// Parameter `k` of a frame, from 1 to 12; 0.0 without an array.
inline double Param(const ParamValueArray* params, int k) {
  return params ? params->value[k - 1] : 0.0;
}

// One reported parameter. The default comes from the processor's fields at the moment of the question.
struct ParamRow {
  const char16_t* name;  // at most 31 characters
  int32_t type;          // as in FilterParamDesc
  double minimum;
  double maximum;
};

// Fills `desc` from row `index` and the default at the same place; leaves it alone if there is no such row.
void DescribeParam(FilterParamDesc* desc, int32_t index, std::span<const ParamRow> rows,
                   std::initializer_list<double> defaults);

#endif  // KVX_FRAMEWORK_PARAMS_H_
