#include "Source/SplitFilter.h"

#include <algorithm>
#include <array>
#include <mutex>

#include "Source/PixelWords.h"
#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/params.h"

namespace {

// What a mode does: on which diagonal it cuts, which side it displaces, and by how much.
struct Mode {
  int32_t mode;
  int32_t slope;  // the cut runs along y + slope * x
  bool above;     // the displaced side is that of smaller keys, else that of larger ones
  int32_t columns;
  int32_t rows;
};
constexpr Mode kModes[] = {
    {1, 1, true, 50, 10}, {-1, -1, true, -50, 50}, {2, -1, false, 50, -40}, {-2, 1, false, -50, -50}};

// The cut's rhythm: 20 frames on, 5 back, 10 on and so forth. One for all instances, with a counter for each mode.
class Rhythm {
 public:
  // Counts a frame of the mode; the direction in which its line moves, 0 on the frame between two steps.
  int32_t Advance(size_t mode) {
    const std::lock_guard lock(mutex_);
    int32_t& counter = counters_[mode];
    counter = WrapAdd(counter, 1);
    if (counter < boundary_) return kSteps[step_].direction;
    if (counter > boundary_) return 0;
    if (++step_ < kSteps.size()) {
      boundary_ += kSteps[step_].direction * kSteps[step_].duration;
    } else {
      counter = 0;
      step_ = 0;
      boundary_ = kSteps[0].duration;
    }
    return 0;
  }

 private:
  struct Step {
    int32_t direction, duration;
  };
  static constexpr std::array<Step, 6> kSteps = {{{1, 20}, {-1, -5}, {1, 10}, {-1, -8}, {1, 15}, {-1, -7}}};

  std::mutex mutex_;
  std::array<int32_t, std::size(kModes)> counters_{};
  size_t step_ = 0;
  int32_t boundary_ = kSteps[0].duration;
};

Rhythm g_rhythm;

// Pixels `begin` to `end` of a row from `shift` columns on. Beyond the row's ends its last pixel inside counts.
void CopyShifted(const uint8_t* in, uint8_t* out, int32_t begin, int32_t end, int32_t shift, int32_t width) {
  if (begin >= end) return;
  const int32_t first = ClampInt(-shift, begin, end);
  const int32_t last = std::max(ClampInt(width - shift, begin, end), first);
  FillPixels(out, begin, first, LoadPixel(in, 0));
  if (first < last)
    CopyPixels(in + 4 * static_cast<ptrdiff_t>(first + shift), out + 4 * static_cast<ptrdiff_t>(first), last - first);
  FillPixels(out, last, end, LoadPixel(in, width - 1));
}

// Keys strictly between `low` and `high` are the seam; the displaced side lies beyond it, the plain one on the other
// side, both ends of the seam included.
void Cut(ConstFrameView src, FrameView dst, const Mode& mode, int64_t low, int64_t high) {
  const int32_t width = dst.width;
  for (int32_t y = 0; y < dst.height; ++y) {
    const uint8_t* in = src.Row(y);
    uint8_t* out = dst.Row(y);
    // The number of columns, counted from where the keys are smallest, whose key is below `key`.
    const int64_t smallest = mode.slope > 0 ? y : int64_t{y} - (width - 1);
    const auto below = [&](int64_t key) { return static_cast<int32_t>(std::clamp<int64_t>(key - smallest, 0, width)); };
    // A range of such columns as a range of x.
    const auto columns = [&](int32_t begin, int32_t end, auto paint) {
      if (mode.slope > 0) {
        paint(begin, end);
      } else {
        paint(width - end, width - begin);
      }
    };
    CopyPixels(in, out, width);
    columns(below(low + 1), std::max(below(low + 1), below(high)),
            [&](int32_t begin, int32_t end) { FillPixels(out, begin, end, 0); });
    const uint8_t* displaced = src.Row(ClampInt(y + mode.rows, 0, dst.height - 1));
    columns(mode.above ? 0 : below(high + 1), mode.above ? below(low) : width,
            [&](int32_t begin, int32_t end) { CopyShifted(displaced, out, begin, end, mode.columns, width); });
  }
}

}  // namespace

// Of the six only the last counts: the modes have shifts of their own.
void CSplitFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  const double w = width;
  const double h = height;
  const ParamRow rows[] = {{u"Param1", 0, 0, h},    {u"Param2", 0, 1, w},  {u"Param3", 0, -h, h},
                           {u"Param4", 0, -10, 10}, {u"Param5", 0, -h, h}, {u"Param6", 0, -2, 2}};
  DescribeParam(desc, index, rows, {0, 1, 0, 1, 1, -1});
}

void CSplitFilter::MoveLine(int32_t mode, int32_t direction) {
  struct Path {
    int32_t start;
    bool mayRise, mayFall;
  };
  const auto path = [&]() -> Path {
    switch (mode) {
      case 1:
        return {0, line_<height * 4 / 5, line_> 0};
      case -1:
        return {-2 * height, line_ < -height, true};
      case 2:
        return {height, true, line_ > height / 6};
      default:
        return {3 * height, true, line_ > Trunc32(height * 1.9)};
    }
  };
  if (line_ == 0) line_ = path().start;
  const int32_t by = height / 25;
  if (direction > 0 && path().mayRise) line_ = WrapAdd(line_, by);
  if (direction < 0 && path().mayFall) line_ = WrapSub(line_, by);
}

void CSplitFilter::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  const int32_t wanted = Trunc32(Param(params, 6));
  const Mode* mode =
      std::find_if(std::begin(kModes), std::end(kModes), [&](const Mode& m) { return m.mode == wanted; });
  if (mode == std::end(kModes) || width <= 0 || height <= 0) return;
  MoveLine(wanted, g_rhythm.Advance(static_cast<size_t>(mode - kModes)));
  const int64_t line = line_;
  const int64_t seam = height / 100;
  Cut(PackedSource(src, width, height), PackedDest(dst, width, height), *mode, mode->above ? line - seam : line,
      mode->above ? line : line + seam);
}
