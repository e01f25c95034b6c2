#include "Source/BGFCommon.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "Source/BGFPatterns.h"
#include "framework/my_resize.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/params.h"
#include "framework/pixels.h"
#include "framework/row_loops.h"

namespace {

constexpr double kSourceWidth = 0.7;
constexpr int32_t kBgColor = 0xFFFFFF;
constexpr int32_t kBands = 8;
constexpr int64_t kPixelsOfOneThread = 10000;

// `Source_Width` is what the box leaves of the frame: none at or below 0, and at most 0.8, NaN included.
FillBox BoxOf(double sourceWidth, int32_t width, int32_t height) {
  double s = 1 - sourceWidth;
  if (!(s >= 0.2)) s = 0.2;
  s = std::min(s, 1.0);
  const int32_t boxWidth = Trunc32(width * s);
  const int32_t boxHeight = Trunc32(height * s);
  const int32_t left = (width - boxWidth) / 2;
  const int32_t top = (height - boxHeight) / 2;
  return {left, top, std::min(left + boxWidth, width - 1), std::min(top + boxHeight, height - 1)};
}

// Copies the box with `offset` added to bytes 0 to 2.
class parallelInvoker : public cv::ParallelLoopBody {
 public:
  parallelInvoker(FrameView dst, ConstFrameView src, int32_t offset)
      : dst_(dst), src_(src), offset_(ClampInt(offset, -255, 255)) {}

  void operator()(const cv::Range& rows) const override {
    for (int32_t y = rows.start; y < rows.end; ++y) {
      const uint8_t* in = src_.Row(y);
      uint8_t* out = dst_.Row(y);
      for (int32_t x = 0; x < dst_.width; ++x, in += 4, out += 4) {
        for (int c = 0; c < 3; ++c) out[c] = static_cast<uint8_t>(std::clamp(in[c] + offset_, 0, 255));
        out[3] = in[3];
      }
    }
  }

 private:
  FrameView dst_;
  ConstFrameView src_;
  int32_t offset_;
};

// Pixels that are laid over the background at a time.
constexpr int32_t kRun = 128;

// The background, scaled up where it is read.
struct Background {
  ResizedFrame picture;
  std::optional<ResizedFrame> sharp;  // shows within the box, if there is one
  FillBox box;
};

// Lays the source by its alpha over the background, whose bytes 0 to 2 are weighed by those of the colour. Without a
// background the source is opaque.
class parallelBGFCommon : public cv::ParallelLoopBody {
 public:
  parallelBGFCommon(FrameView dst, ConstFrameView src, const Background* back, uint32_t color)
      : dst_(dst), src_(src), back_(back), color_(color) {}

  void operator()(const cv::Range& bands) const override {
    CompositeRows(BandStart(bands.start), BandStart(bands.end));
  }

  void CompositeRows(int32_t first, int32_t end) const {
    if (!back_) {
      for (int32_t y = first; y < end; ++y) UnderlayOpaque(src_.Row(y), dst_.Row(y), dst_.width);
      return;
    }
    ResizedFrame::Reader picture(back_->picture);
    std::optional<ResizedFrame::Reader> sharp;
    if (back_->sharp) sharp.emplace(*back_->sharp);
    for (int32_t y = first; y < end; ++y) {
      for (int32_t x = 0; x < dst_.width; x += kRun) {
        const int32_t count = std::min(kRun, dst_.width - x);
        if (IsOpaque(src_.Pixel(x, y), count)) {
          UnderlayOpaque(src_.Pixel(x, y), dst_.Pixel(x, y), count);
          continue;
        }
        uint8_t run[4 * kRun];
        picture.Read(x, y, count, run);
        if (sharp) LaySharp(*sharp, x, y, count, run);
        UnderlayRow(src_.Pixel(x, y), run, dst_.Pixel(x, y), count, color_);
      }
    }
  }

 private:
  int32_t BandStart(int32_t band) const { return static_cast<int32_t>(int64_t{band} * dst_.height / kBands); }

  // The colours of what of the run lies in the box.
  void LaySharp(ResizedFrame::Reader& sharp, int32_t x, int32_t y, int32_t count, uint8_t* run) const {
    const FillBox& box = back_->box;
    const int32_t left = std::max(box.left, x);
    const int32_t end = std::min(box.right + 1, x + count);
    if (y < box.top || y > box.bottom || left >= end) return;
    uint8_t colors[4 * kRun];
    sharp.Read(left, y, end - left, colors);
    uint8_t* out = run + 4 * (left - x);
    for (int32_t i = 0; i < end - left; ++i) {
      StorePixel(out, i, (LoadPixel(out, i) & kAlphaByte) | (LoadPixel(colors, i) & kColorBytes));
    }
  }

  FrameView dst_;
  ConstFrameView src_;
  const Background* back_;
  uint32_t color_;
};

bool IsOpaqueFrame(ConstFrameView frame) {
  for (int32_t y = 0; y < frame.height; ++y) {
    if (!IsOpaque(frame.Row(y), frame.width)) return false;
  }
  return true;
}

// Multiplies bytes 0 to 2 by byte 3: c * a * 0.003921569 cut, which is c * a / 255 for all bytes.
void Premultiply(FrameView image) {
  ForFillRows(image, [](int32_t, uint8_t* p, int32_t width) {
    for (int32_t x = 0; x < width; ++x, p += 4) {
      for (int c = 0; c < 3; ++c) p[c] = static_cast<uint8_t>(uint32_t{p[c]} * p[3] / 255);
    }
  });
}

ConstFrameView Const(FrameView view) {
  return {view.data, view.width, view.height, view.step};
}

}  // namespace

BGFCommon::BGFCommon(int32_t frameWidth, int32_t frameHeight, const FillVariant& variant)
    : CBaseFilterProc(frameWidth, frameHeight), variant_(variant) {
  if (width <= 0 || height <= 0) return;
  const size_t bytes = static_cast<size_t>(width) * static_cast<size_t>(height) * 4;
  boxBuffer_.resize(bytes);
  if (variant.sharpMiddle) sharpBuffer_.resize(bytes);
}

void BGFCommon::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  const ParamRow rows[] = {{u"Source_Width", 2, 0.25, 0.8},
                           {u"BG_Color", 4, 0, 4294967295.0},
                           {u"BG_Luminance", 0, -175, 175},
                           {variant_.levelName, 2, 0, 1}};
  DescribeParam(desc, index, rows,
                {kSourceWidth, kBgColor, static_cast<double>(variant_.bgLuminance), variant_.patternLevel});
}

void BGFCommon::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) {
  if (boxBuffer_.empty()) return;
  const FillBox box = BoxOf(Param(params, 1), width, height);
  const uint32_t bgColor = static_cast<uint32_t>(Trunc32(Param(params, 2)));
  const int32_t bgLuminance = Trunc32(Param(params, 3));
  const FillInput input{static_cast<float>(Param(params, 4)), currentFrame};

  const ConstFrameView source{src, width, height, srcStep};
  const bool hidden = IsOpaqueFrame(source);
  // Behind an opaque picture the box is empty: a pattern then only moves its state on.
  const FrameView image{boxBuffer_.data(), hidden ? 0 : box.Width(), hidden ? 0 : box.Height(), width * 4};
  const ConstFrameView sourceBox{source.Pixel(box.left, box.top), image.width, image.height, srcStep};
  ParallelFor(cv::Range(0, image.height), parallelInvoker(image, sourceBox, bgLuminance));

  const FrameView sharp{sharpBuffer_.data(), image.width, image.height, image.step};
  if (variant_.sharpMiddle) {
    ForFillRows(sharp, [image](int32_t y, uint8_t* row, int32_t count) {
      std::memcpy(row, image.Row(y), static_cast<size_t>(count) * 4);
    });
  }
  if (variant_.blurBefore) FillBlur(image, Trunc32(std::min(width, height) * double{input.level} / 8.8));
  if (variant_.patternRoutine) variant_.patternRoutine(image, input);
  if (!variant_.sharpMiddle) Premultiply(image);

  std::optional<Background> back;
  if (!hidden) {
    back.emplace(Background{ResizedFrame(Const(image), width, height), {}, box});
    if (variant_.sharpMiddle) back->sharp.emplace(Const(sharp), width, height);
  }
  const parallelBGFCommon composite({dst, width, height, dstStep}, source, back ? &*back : nullptr, bgColor);
  if (int64_t{width} * height <= kPixelsOfOneThread) {
    composite.CompositeRows(0, height);
  } else {
    ParallelFor(cv::Range(0, kBands), composite, cv::getNumThreads());
  }
}
