#include "Source/Delay.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

#include "framework/frame.h"
#include "framework/params.h"
#include "framework/zeroed_array.h"

namespace {

constexpr ParamRow kParams[] = {{u"Delay", 2, 0, 36000000}, {u"Time", 3, 0, 36000000}};
constexpr size_t kMaxFrames = 0x7FFFFFFFFFFFFFE;

bool SameTime(double a, double b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

}  // namespace

void CDelay::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {delay_, 0});
}

// Of frames of one time only the first can ever be the oldest, so that the others need not be kept: a clip that stands
// still, or a catalogue that feeds no time, costs one frame.
void CDelay::Remember(double time, const uint8_t* src, std::unique_ptr<uint8_t[]> spare) {
  for (const Frame& frame : frames_) {
    if (SameTime(frame.time, time)) return;
  }
  if (frames_.size() >= kMaxFrames) throw std::length_error("list<T> too long");
  const size_t bytes = 4 * PixelCount(width, height);
  if (!spare) spare.reset(new (std::nothrow) uint8_t[bytes]);
  if (!spare) return;
  std::memcpy(spare.get(), src, bytes);
  try {
    frames_.push_back({time, std::move(spare)});
  } catch (const std::bad_alloc&) {  // as without a buffer: this frame is forgotten
  }
}

void CDelay::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  delay_ = Param(params, 1);
  const double time = Param(params, 2);

  std::unique_ptr<uint8_t[]> spare;  // the first buffer that falls free serves the new frame
  for (auto frame = frames_.begin(); frame != frames_.end();) {
    if (time - delay_ > frame->time) {
      if (!spare) spare = std::move(frame->pixels);
      frame = frames_.erase(frame);
    } else {
      ++frame;
    }
  }
  Remember(time, src, std::move(spare));

  const auto oldest =
      std::min_element(frames_.begin(), frames_.end(), [](const Frame& a, const Frame& b) { return a.time < b.time; });
  std::memcpy(dst, oldest != frames_.end() ? oldest->pixels.get() : src, 4 * PixelCount(width, height));
}
