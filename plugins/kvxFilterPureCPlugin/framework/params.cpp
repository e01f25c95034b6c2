#include "framework/params.h"

#include <iterator>

void DescribeParam(FilterParamDesc* desc, int32_t index, std::span<const ParamRow> rows,
                   std::initializer_list<double> defaults) {
  const size_t place = static_cast<size_t>(index);
  if (!desc || index < 0 || place >= rows.size() || place >= defaults.size()) return;
  const ParamRow& row = rows[place];
  desc->index = index;
  for (size_t i = 0; i < std::size(desc->name) - 1 && row.name[i]; ++i) desc->name[i] = row.name[i];
  desc->type = row.type;
  desc->minimum = row.minimum;
  desc->defaultValue = defaults.begin()[place];
  desc->maximum = row.maximum;
}
