#include "Source/EdgeglowFilter.h"

#include <vector>

#include "Source/EdgeLight.h"
#include "framework/frame.h"
#include "framework/parallel.h"
#include "framework/params.h"
#include "framework/row_loops.h"

namespace {

constexpr int32_t kEdgeglow = 29;

constexpr ParamRow kEdgeglowParams[] = {{u"Thresh", 0, 1, 400}, {u"Upscale", 0, 0, 500}, {u"Redscale", 0, 0, 100}};

// The rim stays as `dst` holds it.
void EdgeGlow(ConstFrameView src, FrameView dst, const EdgeLight& light) {
  const int32_t inner = src.width - 2;
  if (inner <= 0) return;
  ForRowBands(dst.width, 1, dst.height - 1, [=](int32_t begin, int32_t end) {
    std::vector<uint8_t> edges(static_cast<size_t>(inner) * 4);
    for (int32_t y = begin; y < end; ++y) {
      SobelRow(src.Pixel(1, y - 1), src.Pixel(1, y), src.Pixel(1, y + 1), edges.data(), inner);
      RelightRow(src.Pixel(1, y), edges.data(), dst.Pixel(1, y), inner, light);
    }
  });
}

}  // namespace

// Reports a hundred times what the last frame received.
void CEdgeglowFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kEdgeglowParams, {threshold_ * 100, upscale_ * 100, redscale_ * 100});
}

void CEdgeglowFilter::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  if (!src || !dst || !params || params->effectId != kEdgeglow) return;
  threshold_ = Param(params, 1);
  upscale_ = Param(params, 2);
  redscale_ = Param(params, 3);
  const ConstFrameView in = PackedSource(src, width, height);
  const FrameView out = PackedDest(dst, width, height);
  CopyRows(in.data, out.data, width, height, in.step, out.step);
  EdgeGlow(in, out, {static_cast<float>(threshold_ * 255), upscale_, redscale_});
}
