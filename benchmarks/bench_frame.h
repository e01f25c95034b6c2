// Frames to time effects on.
#ifndef KVX_BENCHMARKS_BENCH_FRAME_H_
#define KVX_BENCHMARKS_BENCH_FRAME_H_

#include <cstddef>
#include <cstdint>
#include <vector>

// Memory for one frame that all rows of a table share, so that none is lucky with its place: two frames at the same
// place within a page would slow each other down.
class FrameMemory {
 public:
  FrameMemory(int32_t width, int32_t height, size_t offset)
      : offset_(offset), pages_(static_cast<size_t>(width) * static_cast<size_t>(height) * 4 + 2 * kPage) {}
  uint8_t* Data() {
    const auto address = reinterpret_cast<uintptr_t>(pages_.data());
    return pages_.data() + (kPage - address % kPage) + offset_;
  }

 private:
  static constexpr size_t kPage = 4096;
  size_t offset_;
  std::vector<uint8_t> pages_;
};
constexpr size_t kSourceOffset = 0;
constexpr size_t kDestinationOffset = 1344;

// Smooth areas, edges and grain, opaque: what effects meet.
inline void FillFrame(uint8_t* bytes, int32_t width, int32_t height) {
  uint32_t s = 1;
  uint8_t* p = bytes;
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x, p += 4) {
      s = s * 1664525u + 1013904223u;
      const uint32_t grain = s >> 28;
      const uint32_t block = (x / 120 + y / 90) % 2 ? 60 : 0;
      p[0] = static_cast<uint8_t>(x * 160 / width + block + grain);
      p[1] = static_cast<uint8_t>(y * 200 / height + grain);
      p[2] = static_cast<uint8_t>((x + y) * 180 / (width + height) + block / 2 + grain);
      p[3] = 255;
    }
  }
}

#endif  // KVX_BENCHMARKS_BENCH_FRAME_H_
