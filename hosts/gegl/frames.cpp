#include "hosts/gegl/frames.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "hostkit/pixels.h"

namespace kvx {

namespace {

// The last frames' memory, for the next: fresh pages from the system cost more than all the copying.
class SpareBlocks {
 public:
  SpareBlocks() { blocks_.reserve(kMostKept); }
  MemoryBlock Take(size_t size) {
    {
      const std::lock_guard lock(mutex_);
      const auto fits = [size](const MemoryBlock& block) { return block.size >= size && block.size / 2 <= size; };
      const auto found = std::find_if(blocks_.begin(), blocks_.end(), fits);
      if (found != blocks_.end()) {
        MemoryBlock block = std::move(*found);
        blocks_.erase(found);
        return block;
      }
    }
    return {std::make_unique_for_overwrite<uint8_t[]>(size), size};
  }
  void Give(MemoryBlock block) {
    if (block.size > kLargestKept) return;
    const std::lock_guard lock(mutex_);
    if (blocks_.size() == kMostKept) blocks_.erase(blocks_.begin());
    blocks_.push_back(std::move(block));
  }

 private:
  static constexpr size_t kMostKept = 2;  // what one operation needs
  static constexpr size_t kLargestKept = size_t{1} << 26;

  std::mutex mutex_;
  std::vector<MemoryBlock> blocks_;
};

SpareBlocks& Spares() {
  static auto* const spares = new SpareBlocks;  // operations may outlive static objects
  return *spares;
}

// Calls `visit(chunk, its rectangle)` for each chunk of memory that the region lies in: whole tiles without a copy
// where the buffer has the format.
template <typename Visit>
void ForEachChunk(GeglBuffer* buffer, const GeglRectangle& region, const Babl* format, GeglAccessMode mode,
                  Visit visit) {
  GeglBufferIterator* it = gegl_buffer_iterator_new(buffer, &region, 0, format, mode, GEGL_ABYSS_NONE, 1);
  while (gegl_buffer_iterator_next(it)) visit(static_cast<uint8_t*>(it->items[0].data), it->items[0].roi);
}

}  // namespace

Frame::Frame(const GeglRectangle& box)
    : box_(box), block_(Spares().Take(static_cast<size_t>(box.width) * static_cast<size_t>(box.height) * 4)) {}

Frame::~Frame() {
  Spares().Give(std::move(block_));
}

uint8_t* Frame::At(int x, int y) const {
  return block_.bytes.get() + (static_cast<ptrdiff_t>(y - box_.y) * box_.width + (x - box_.x)) * 4;
}

void Frame::Read(GeglBuffer* buffer, const Babl* format) {
  ForEachChunk(buffer, box_, format, GEGL_ACCESS_READ, [this](const uint8_t* chunk, const GeglRectangle& at) {
    const auto width = static_cast<size_t>(at.width);
    for (int y = 0; y < at.height; ++y, chunk += width * 4) SwapRedBlue(chunk, At(at.x, at.y + y), width);
  });
}

void Frame::Write(GeglBuffer* buffer, const Babl* format, const GeglRectangle& region) const {
  GeglRectangle inside;
  if (!gegl_rectangle_intersect(&inside, &region, &box_)) return;
  ForEachChunk(buffer, inside, format, GEGL_ACCESS_WRITE, [this](uint8_t* chunk, const GeglRectangle& at) {
    const auto width = static_cast<size_t>(at.width);
    for (int y = 0; y < at.height; ++y, chunk += width * 4) SwapRedBlue(At(at.x, at.y + y), chunk, width);
  });
}

}  // namespace kvx
