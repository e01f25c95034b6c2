#include <cstdlib>
#include <cstring>
#include <exception>
#include <mutex>

#include "engine/engine_internal.h"
#include "framework/random.h"
#include "platform/clock.h"

namespace {

struct ClampBytes {
  uint8_t bytes[768];
  constexpr ClampBytes() : bytes() {
    for (int i = 0; i < 768; ++i) bytes[i] = static_cast<uint8_t>(i < 256 ? 0 : i < 512 ? i - 256 : 255);
  }
};
constexpr ClampBytes kClampBytes;

void BuildRandomTable() {
  static std::once_flag once;
  std::call_once(once, [] {
    Rand rand;
    rand.Seed(CalendarSeconds());
    for (uint8_t& byte : randomTable) byte = static_cast<uint8_t>(rand.Next());
  });
}

using code::IsLook;
using code::IsMerge;
using code::IsWarp;

int32_t RunCode(EngineRecord& record, const EngineImage& from, const EngineImage& image, const EngineImage* second) {
  if (IsLook(record.code)) return EngineRunLook(record, from, image);
  if (IsWarp(record.code)) return EngineRunWarp(record, from, image);
  if (IsMerge(record.code)) return EngineRunMerge(record, from, image, second);
  return kEngineFailed;
}

// The capacity is stored even when there was no memory, so that the same size is not tried again.
uint8_t* Ensure(uint8_t*& buffer, int32_t& capacity, int32_t size, bool* reallocated = nullptr) {
  if (capacity >= size) return buffer;
  std::free(buffer);
  buffer = static_cast<uint8_t*>(std::malloc(static_cast<size_t>(size)));
  capacity = size;
  if (reallocated) *reallocated = true;
  return buffer;
}

}  // namespace

const uint8_t* const clampTable = kClampBytes.bytes + 256;
uint8_t randomTable[1024];

EngineImage MakeEngineImage(uint8_t* pixels, int32_t width, int32_t height, int32_t stepBytes) {
  const int64_t total = static_cast<int64_t>(stepBytes) * height;
  return {
      sizeof(EngineImage), width, height, 32, stepBytes, total <= INT32_MAX ? static_cast<int32_t>(total) : -1, pixels};
}

uint8_t* EnsureWorkCopy(EngineRecord& record, int32_t size) {
  return Ensure(record.workCopy, record.workCapacity, size);
}

uint8_t* EnsureSourceCopy(EngineRecord& record, int32_t size) {
  return Ensure(record.sourceCopy, record.sourceCapacity, size);
}

uint8_t* EnsureTable(EngineRecord& record, int32_t size, uint32_t flags) {
  bool reallocated = false;
  uint8_t* buffer = Ensure(record.tableBuffer, record.tableCapacity, size, &reallocated);
  if (reallocated) record.dirtyFlags |= flags;
  return buffer;
}

int32_t EngineCreate(EngineRecord** out, uint32_t code) {
  BuildRandomTable();
  if (!IsLook(code) && !IsWarp(code) && !IsMerge(code)) return kEngineBadCode;
  if (!out) return kEngineFailed;
  auto* record = static_cast<EngineRecord*>(std::calloc(1, sizeof(EngineRecord)));
  if (!record) return kEngineFailed;
  record->structSize = sizeof(EngineRecord);
  record->code = code;
  if (IsLook(code)) {
    EngineInitLook(*record);
  } else if (IsWarp(code)) {
    EngineInitWarp(*record);
  } else {
    EngineInitMerge(*record);
  }
  *out = record;
  return kEngineDone;
}

namespace {

int32_t Run(EngineRecord* record, const EngineImage* from, const EngineImage* image, const EngineImage* second) {
  if (!record || record->structSize != sizeof(EngineRecord)) return kEngineBadRecord;
  if (!image || image->structSize != sizeof(EngineImage) || !image->pixels || image->totalBytes <= 0 ||
      image->width <= 0 || image->height <= 0 || image->stepBytes <= 0 || image->bitsPerPixel != 32) {
    return kEngineBadImage;
  }
  if (image->width != record->width || image->height != record->height) {
    record->width = image->width;
    record->height = image->height;
    record->dirtyFlags |= kDirtyParticles;
  }
  try {
    return RunCode(*record, *from, *image, second);
  } catch (const std::exception&) {  // no memory, as the standard library and OpenCV say it
    return kEngineNoScratch;
  }
}

}  // namespace

int32_t EngineRunFrom(EngineRecord* record, const EngineImage& from, const EngineImage& image,
                      const EngineImage* second) {
  return Run(record, &from, &image, second);
}

bool EngineSparesCopy(const EngineRecord* record) {
  return record && (IsDirectLook(record->code) || IsDirectWarp(record->code) || IsDirectMerge(record->code));
}

int32_t EngineFree(EngineRecord* record) {
  if (!record) return kEngineFailed;
  if (record->structSize != sizeof(EngineRecord)) return kEngineBadRecord;
  std::free(record->workCopy);
  std::free(record->tableBuffer);
  std::free(record->sourceCopy);
  std::free(record);
  return kEngineDone;
}

void MapChannels(const EngineImage& from, const EngineImage& image, const uint8_t* blue, const uint8_t* green,
                 const uint8_t* red) {
  for (int32_t y = 0; y < image.height; ++y) MapRow(from.Row(y), image.Row(y), image.width, {blue, green, red});
}

void MapGray(const EngineImage& from, const EngineImage& image, const GrayWeights& weights, const Curve& blue,
             const Curve& green, const Curve& red) {
  for (int32_t y = 0; y < image.height; ++y) {
    MapGrayRow(from.Row(y), image.Row(y), image.width, weights, {blue.data(), green.data(), red.data()});
  }
}
