// A broken television: the picture rolls, its edge wobbles.
#include <algorithm>
#include <atomic>
#include <cstring>

#include "engine/engine_internal.h"
#include "engine/film_wear.h"
#include "engine/frame_rate.h"
#include "framework/numeric.h"
#include "framework/random.h"

namespace film {

namespace {

constexpr int32_t kBlocks = 4;
constexpr int32_t kBlockRows = 100;

// How far the rows are pushed to the right: four ways in which an edge can bend.
// clang-format off
constexpr uint8_t kEdges[kBlocks][kBlockRows] = {
    {
        80, 83, 85, 89, 92, 99, 105, 121, 126, 134, 141, 148, 148, 148, 150, 151, 149, 150, 149, 150,
        148, 144, 144, 139, 138, 133, 130, 130, 125, 123, 123, 121, 118, 120, 118, 119, 118, 121, 122, 124,
        125, 124, 125, 125, 125, 125, 126, 128, 126, 129, 129, 130, 132, 132, 132, 133, 134, 132, 136, 132,
        134, 132, 127, 127, 123, 121, 115, 112, 109, 109, 104, 104, 103, 102, 100, 100, 101, 103, 102, 105,
        106, 107, 105, 107, 104, 104, 103, 102, 98, 98, 94, 91, 89, 86, 84, 82, 83, 82, 80, 80,
    },
    {
        82, 80, 80, 80, 82, 84, 84, 85, 85, 89, 88, 91, 93, 92, 95, 96, 96, 97, 95, 97,
        99, 106, 110, 117, 125, 129, 132, 132, 133, 137, 141, 145, 148, 149, 150, 151, 151, 150, 149, 148,
        146, 146, 147, 147, 145, 145, 145, 144, 143, 143, 142, 143, 141, 141, 139, 135, 129, 126, 120, 116,
        111, 112, 111, 112, 110, 110, 108, 107, 104, 105, 105, 105, 105, 109, 111, 114, 117, 120, 120, 122,
        121, 122, 121, 116, 112, 108, 103, 97, 96, 93, 93, 91, 91, 90, 88, 86, 82, 81, 81, 81,
    },
    {
        81, 84, 87, 90, 97, 102, 108, 113, 116, 117, 118, 119, 123, 125, 128, 128, 126, 126, 120, 118,
        113, 110, 106, 106, 104, 102, 104, 101, 101, 99, 98, 98, 96, 93, 93, 91, 90, 89, 91, 92,
        95, 98, 100, 103, 109, 109, 113, 117, 120, 119, 121, 123, 123, 126, 129, 134, 140, 142, 147, 149,
        148, 147, 150, 149, 150, 150, 152, 151, 149, 148, 144, 143, 139, 135, 133, 130, 123, 121, 117, 117,
        114, 111, 110, 109, 111, 108, 108, 106, 104, 101, 99, 94, 93, 89, 87, 84, 82, 81, 80, 80,
    },
    {
        81, 81, 81, 86, 91, 98, 105, 110, 115, 124, 128, 134, 138, 140, 140, 142, 142, 145, 149, 148,
        149, 151, 148, 150, 149, 148, 147, 148, 148, 145, 146, 146, 144, 141, 137, 135, 132, 126, 124, 123,
        121, 121, 118, 120, 119, 117, 114, 110, 110, 106, 105, 104, 101, 98, 98, 99, 97, 100, 101, 103,
        107, 108, 110, 112, 112, 113, 117, 121, 127, 129, 134, 136, 138, 138, 140, 139, 139, 142, 141, 142,
        142, 142, 139, 137, 132, 130, 125, 122, 117, 111, 106, 102, 99, 93, 91, 88, 84, 84, 81, 81,
    },
};
// clang-format on

// All televisions of the process bend alike.
std::atomic<int32_t> currentBlock{0};

int32_t BlockOf(int32_t frameNumber, int32_t period) {
  if (frameNumber % period == 0) {
    Rand rand;
    rand.Seed(static_cast<uint32_t>(frameNumber));
    currentBlock.store(rand.Next() & 3, std::memory_order_relaxed);
  }
  return currentBlock.load(std::memory_order_relaxed);
}

void ClearRows(uint8_t* pixels, int32_t step, int32_t width, int32_t first, int32_t last) {
  for (int32_t y = first; y < last; ++y)
    std::memset(pixels + static_cast<int64_t>(y) * step, 0, 4 * static_cast<size_t>(width));
}

}  // namespace

int32_t BadTvSignal(EngineRecord& record, const EngineImage& image) {
  const int32_t width = image.width;
  const int32_t height = image.height;
  int32_t scale = 1;
  int32_t rowsPerEntry = 1;
  int32_t bars = 10;
  if (width >= 2048) {
    scale = width / 960;
    bars = Trunc32(height / 640.0 * 10);
    rowsPerEntry = height >= 640 ? height / 640 : 1;
  }
  ClearRows(record.workCopy, image.stepBytes, width, 0, std::min(bars, height));
  ClearRows(record.workCopy, image.stepBytes, width, std::max(height - bars, 0), height);

  const double rate = FrameRateOf(record);
  const int64_t rolled = int64_t{Trunc32(125.0 / rate)} * record.frameNumber;
  const uint8_t* edge = kEdges[BlockOf(record.frameNumber, std::max(Trunc32(rate / 24.0), 1))];
  const uint8_t* work = record.workCopy;
  ForEachRow(image, [=, step = image.stepBytes](int32_t y, uint8_t* to) {
    const int32_t shift = scale * edge[(y / rowsPerEntry) % kBlockRows] % width;
    int64_t turned = (rolled - y - 1 + height) % height;
    if (turned < 0) turned += height;
    const uint8_t* from = work + (height - 1 - turned) * step;
    std::memcpy(to + 4 * shift, from, 4 * static_cast<size_t>(width - shift));
    std::memcpy(to, from + 4 * (width - shift), 4 * static_cast<size_t>(shift));
  });
  return kEngineDone;
}

}  // namespace film
