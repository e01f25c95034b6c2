// Jigsaw panes: parts of the frame, each tinted by exclusion with a colour of its own, with lines, cards and shadows
// between. A layout is a list of panes; where panes lie over one another, the last counts.
#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "engine/blends.h"
#include "engine/engine_internal.h"
#include "engine/pane_looks.h"
#include "framework/numeric.h"

namespace {

// What fills a pane: one of eight tints, or a grey.
using Paint = int32_t;
enum : Paint { kP1, kP2, kP3, kP4, kP5, kP6, kP7, kP8, kGrays };
constexpr Paint kBlack = kGrays;
constexpr Paint kWhite = kGrays + 255;

constexpr uint8_t kTintColors[kGrays][3] = {{9, 62, 103}, {16, 5, 99},  {86, 2, 2},   {21, 59, 7},
                                            {21, 59, 79}, {75, 46, 17}, {58, 15, 34}, {14, 24, 63}};

using Tint = std::array<Curve, 3>;
const std::array<Tint, kGrays>& Tints() {
  static const std::array<Tint, kGrays> tints = [] {
    std::array<Tint, kGrays> made;
    for (size_t i = 0; i < made.size(); ++i) {
      for (size_t c = 0; c < 3; ++c) made[i][c] = ExclusionCurve(kTintColors[i][c]);
    }
    return made;
  }();
  return tints;
}

// In pixels; right and bottom stand outside. May reach out of the frame.
struct Pane {
  int32_t left;
  int32_t top;
  int32_t right;
  int32_t bottom;
  Paint paint;
};

void PaintRun(const uint8_t* in, uint8_t* out, int32_t count, Paint paint) {
  if (paint < kGrays) {
    const Tint& tint = Tints()[static_cast<size_t>(paint)];
    return MapRow(in, out, count, {tint[0].data(), tint[1].data(), tint[2].data()});
  }
  const uint32_t gray = static_cast<uint32_t>(paint - kGrays) * 0x010101u;
  for (int32_t x = 0; x < count; ++x) StorePixel(out, x, (LoadPixel(in, x) & kAlphaByte) | gray);
}

// Pixels side by side that get the same.
struct Run {
  int32_t first;
  int32_t count;
  Paint paint;
};

// The runs of row `y`; the first pane must cover the frame.
std::vector<Run> RunsOf(std::span<const Pane> panes, int32_t y, int32_t width) {
  std::vector<Paint> paints(static_cast<size_t>(width));
  const auto column = [&](int32_t x) { return paints.begin() + std::clamp(x, 0, width); };
  for (const Pane& pane : panes) {
    if (pane.top <= y && y < pane.bottom && pane.left < pane.right) {
      std::fill(column(pane.left), column(pane.right), pane.paint);
    }
  }
  std::vector<Run> runs;
  for (int32_t x = 0; x < width; ++x) {
    const Paint paint = paints[static_cast<size_t>(x)];
    if (runs.empty() || runs.back().paint != paint) runs.push_back({x, 0, paint});
    ++runs.back().count;
  }
  return runs;
}

// Rows between two edges of panes are alike.
void PaintPanes(const EngineImage& from, const EngineImage& image, std::span<const Pane> panes) {
  ForRowBands(image.width, 0, image.height, [=](int32_t begin, int32_t end) {
    std::vector<Run> runs;
    for (int32_t y = begin; y < end; ++y) {
      const auto changes = [y](const Pane& pane) { return pane.top == y || pane.bottom == y; };
      if (y == begin || std::ranges::any_of(panes, changes)) runs = RunsOf(panes, y, image.width);
      for (const Run& run : runs) {
        const ptrdiff_t first = ptrdiff_t{4} * run.first;
        PaintRun(from.Row(y) + first, image.Row(y) + first, run.count, run.paint);
      }
    }
  });
}

// Lines follow the frame: as thick as in a frame 640 pixels wide.
float LineScale(int32_t width) {
  return std::max(1.0f, static_cast<float>(width) / 640.0f);
}

// ---- Layouts in pixels, with black lines ----

struct PixelLayout {
  explicit PixelLayout(const EngineImage& image)
      : width(image.width),
        height(image.height),
        columnHalf(static_cast<int32_t>(LineScale(width))),
        rowHalf(static_cast<int32_t>(static_cast<float>(width) * LineScale(width) / static_cast<float>(height))) {}

  void Add(int32_t left, int32_t top, int32_t right, int32_t bottom, Paint paint) {
    panes.push_back({left, top, right, bottom, paint});
  }
  void AddColumnLine(int32_t x, int32_t top, int32_t bottom) {
    Add(x - columnHalf, top, x + columnHalf, bottom, kBlack);
  }
  void AddRowLine(int32_t y, int32_t left, int32_t right, int32_t half) {
    Add(left, y - half, right, y + half, kBlack);
  }

  int32_t width;
  int32_t height;
  int32_t columnHalf;  // half the thickness of lines between columns
  int32_t rowHalf;     // and of lines between rows, where the layout keeps the frame's proportions
  std::vector<Pane> panes;
};

// Two rows, split at different thirds.
std::vector<Pane> LayoutB(const EngineImage& image) {
  PixelLayout l(image);
  const int32_t third = l.width / 3;
  const int32_t middle = l.height / 2;
  l.Add(0, 0, l.width, l.height, kP2);
  l.Add(0, 0, third, middle, kP1);
  l.Add(0, middle, 2 * third, l.height, kP3);
  l.Add(2 * third, middle, l.width, l.height, kP4);
  l.AddColumnLine(third, 0, middle);
  l.AddColumnLine(2 * third, middle, l.height);
  l.AddRowLine(middle, 0, l.width, l.columnHalf);
  return l.panes;
}

// Four quarters.
std::vector<Pane> LayoutC(const EngineImage& image) {
  PixelLayout l(image);
  const int32_t center = l.width / 2;
  const int32_t middle = l.height / 2;
  l.Add(0, 0, l.width, l.height, kP5);
  l.Add(center, 0, l.width, middle, kP6);
  l.Add(0, middle, center, l.height, kP7);
  l.Add(center, middle, l.width, l.height, kP8);
  l.AddColumnLine(center, 0, l.height);
  l.AddRowLine(middle, 0, l.width, l.rowHalf);
  return l.panes;
}

// Four arms turn around a small pane: opposite arms have the same colour.
std::vector<Pane> LayoutD(const EngineImage& image) {
  PixelLayout l(image);
  const int32_t right = 2 * (l.width / 3);
  const int32_t left = right - l.width / 2;
  const int32_t top = l.height / 4;
  const int32_t bottom = l.height / 2;
  l.Add(0, 0, l.width, l.height, kP3);
  l.Add(0, 0, right, top, kP1);
  l.Add(right, 0, l.width, bottom, kP2);
  l.Add(left, bottom, l.width, l.height, kP1);
  l.Add(0, top, left, l.height, kP2);
  l.AddRowLine(top, 0, right, l.rowHalf);
  l.AddColumnLine(right, 0, bottom);
  l.AddRowLine(bottom, left, l.width, l.rowHalf);
  l.AddColumnLine(left, top, l.height);
  return l.panes;
}

// ---- Layouts in shares of the frame, v upward, with white lines and cards ----

// Open at both ends, or with both ends.
struct Range {
  double low;
  double high;
  bool closed;
};
constexpr double kFar = std::numeric_limits<double>::infinity();
constexpr Range kAll = {-kFar, kFar, false};
Range Above(double low) {
  return {low, kFar, false};
}
Range Below(double high) {
  return {-kFar, high, false};
}
Range Between(double low, double high) {
  return {low, high, true};
}

// The numbers k from 0 to `size` for which k / size lies in the range: first, and one behind the last.
struct Steps {
  int32_t first;
  int32_t end;
};
Steps StepsIn(const Range& range, int32_t size) {
  const auto firstWhere = [size](auto reached) {
    int32_t first = 0;
    for (int32_t end = size + 1; first < end;) {
      const int32_t middle = first + (end - first) / 2;
      if (reached(static_cast<double>(middle) / size)) {
        end = middle;
      } else {
        first = middle + 1;
      }
    }
    return first;
  };
  const auto firstAbove = [&](double limit) { return firstWhere([limit](double share) { return share > limit; }); };
  const auto firstFrom = [&](double limit) { return firstWhere([limit](double share) { return share >= limit; }); };
  return range.closed ? Steps{firstFrom(range.low), firstAbove(range.high)}
                      : Steps{firstAbove(range.low), firstFrom(range.high)};
}

struct ShareLayout {
  explicit ShareLayout(const EngineImage& image)
      : width(image.width), height(image.height), gx(2.0 * LineScale(width) / width), gy(width * gx / height) {}

  // Pixel x stands at u = x / width, row y at v = (height - y) / height.
  void Add(const Range& u, const Range& v, Paint paint) {
    const Steps x = StepsIn(u, width);
    AddColumns(x.first, x.end, v, paint);
  }
  void AddColumns(int32_t left, int32_t right, const Range& v, Paint paint) {
    const Steps y = StepsIn(v, height);
    panes.push_back({left, height - y.end + 1, right, height - y.first + 1, paint});
  }

  int32_t width;
  int32_t height;
  double gx;  // thickness of lines
  double gy;
  std::vector<Pane> panes;
};

// A staircase between two panes.
std::vector<Pane> LayoutA(const EngineImage& image) {
  constexpr double a = 0.2453125;
  constexpr double b = 0.490625;
  constexpr double c = 0.7359375;
  ShareLayout l(image);
  l.Add(kAll, kAll, kP3);
  l.Add(Below(0.2453135), kAll, kP2);  // not quite a
  l.Add(Between(a, b), Below(a), kP2);
  l.Add(Between(b, c), Below(c), kP2);
  l.Add(Between(a, a + l.gx), Above(a), kWhite);
  l.Add(Between(b, b + l.gx), Between(a, c), kWhite);
  l.Add(Between(c, c + l.gx), Below(c), kWhite);
  l.Add(Between(a, b), Between(a, a + l.gy), kWhite);
  l.Add(Between(b, c + l.gx), Between(c, c + l.gy), kWhite);
  return l.panes;
}

// A white card in a corner of the frame, a tinted pane inset from the card's two sides within the frame.
struct Card {
  double u;  // the corner inside the frame
  double v;
  bool right;  // which corner of the frame
  bool upper;
  Paint paint;
};

// The shadow falls beside the card, as high as the card, dark far from it.
void AddCard(ShareLayout& l, const Card& card) {
  const Range rows = card.upper ? Above(card.v) : Below(card.v);
  l.Add(card.right ? Above(card.u) : Below(card.u), rows, kWhite);
  l.Add(card.right ? Above(card.u + l.gx) : Below(card.u - l.gx),
        card.upper ? Above(card.v + l.gy) : Below(card.v - l.gy), card.paint);
  const Steps shadow = StepsIn(card.right ? Between(card.u - l.gx, card.u) : Between(card.u, card.u + l.gx), l.width);
  for (int32_t x = shadow.first; x < shadow.end; ++x) {
    const double u = static_cast<double>(x) / l.width;
    const double share =
        card.right ? (u - card.u + l.gx) * (0.6 / l.gx) + 0.1 : 0.1 - (u - card.u - l.gx) * (0.6 / l.gx);
    l.AddColumns(x, x + 1, rows, kGrays + TruncByte(share * 255));
  }
}

// Two cards over two bands.
std::vector<Pane> LayoutE(const EngineImage& image) {
  ShareLayout l(image);
  const double line = (1 - l.gy) / 2;
  l.Add(kAll, kAll, kWhite);
  l.Add(kAll, Below(line), kP3);
  l.Add(kAll, Above(line + l.gy), kP2);
  AddCard(l, {0.557, 0.557, false, false, kP4});
  AddCard(l, {0.73725, 0.29101, true, true, kP1});
  return l.panes;
}

// Three cards.
std::vector<Pane> LayoutF(const EngineImage& image) {
  ShareLayout l(image);
  l.Add(kAll, kAll, kP4);
  AddCard(l, {0.318318, 0.605898, true, true, kP1});
  AddCard(l, {0.4474, 0.654, true, false, kP3});
  AddCard(l, {0.465035, 0.4210526, false, false, kP2});
  return l.panes;
}

}  // namespace

int32_t Jigsaw(EngineRecord& record, const EngineImage& from, const EngineImage& image) {
  static constexpr std::vector<Pane> (*kLayouts[])(const EngineImage&) = {LayoutA, LayoutB, LayoutC,
                                                                          LayoutD, LayoutE, LayoutF};
  PaintPanes(from, image, kLayouts[record.code - code::kJigsawA](image));
  return kEngineDone;
}
