#include "frame.h"

#include <algorithm>
#include <cstring>

bool CopyRows(const uint8_t* src, uint8_t* dst, int32_t width, int32_t height, int32_t srcStep, int32_t dstStep) {
  if (!src || !dst || width <= 0 || height <= 0 || srcStep <= 0 || dstStep <= 0) return false;
  if (srcStep == dstStep) {
    std::memcpy(dst, src, static_cast<size_t>(height) * static_cast<size_t>(dstStep));
    return true;
  }
  const size_t length = static_cast<size_t>(std::min(srcStep, dstStep));
  for (int32_t y = 0; y < height; ++y) {
    std::memcpy(dst + static_cast<ptrdiff_t>(y) * dstStep, src + static_cast<ptrdiff_t>(y) * srcStep, length);
  }
  return true;
}

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
