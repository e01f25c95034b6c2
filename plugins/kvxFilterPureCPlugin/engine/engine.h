// The image-effects engine: one effect, chosen by a numeric code, run in place on a 32-bit image. In the manner of a C
// library: plain records, integer statuses, no exceptions. It knows nothing of processors or of the host.
#ifndef KVX_ENGINE_ENGINE_H_
#define KVX_ENGINE_ENGINE_H_

#include <cstdint>

#include "engine/engine_codes.h"

enum EngineStatus : int32_t {
  kEngineDone = 0,
  kEngineFailed = -1,   // null record at free, no memory at create, no routine for the code at run
  kEngineBadCode = -2,  // code out of range at create
  kEngineBadImage = -3,
  kEngineNullInside = -4,  // null image or record inside a routine
  kEngineBadRecord = -5,
  kEngineNoScratch = -6,  // a scratch buffer could not be had
};

// Bits of EngineRecord::dirtyFlags.
inline constexpr uint32_t kDirtyTables = 1;      // tables in tableBuffer must be built
inline constexpr uint32_t kDirtyMap = 12;        // geometry of the warp routines
inline constexpr uint32_t kDirtyParticles = 32;  // image size changed or particle array reallocated
inline constexpr uint32_t kDirtyAll = 0xFFFFFFFF;

// One effect's parameters and what it keeps between frames.
struct EngineRecord {
  uint32_t structSize;  // marker
  uint32_t code;
  int32_t width;  // of the last image run
  int32_t height;
  int32_t level;   // main strength, usually 0 to 100
  int32_t radius;  // second strength
  int32_t posX;    // percent of the width
  int32_t posY;
  float pointX;  // percent of the width, fractional
  float pointY;
  int32_t rectLeft;
  int32_t rectTop;
  int32_t rectRight;
  int32_t rectBottom;
  uint8_t colorBlue;
  uint8_t colorGreen;
  uint8_t colorRed;
  uint8_t colorExtra;
  int32_t quadX[4];  // corners of a quadrilateral, percent of the width
  int32_t quadY[4];
  double angle;         // rotation of that quadrilateral, radians
  uint8_t* sourceCopy;  // scratch: the image before the routine touches it
  int32_t sourceCapacity;
  uint8_t* workCopy;  // scratch: a second copy, which a routine may overwrite
  int32_t workCapacity;
  uint8_t* tableBuffer;  // tables or particles that outlive a frame
  int32_t tableCapacity;
  int32_t channel;  // 0 blue, 1 green, 2 red, 3 alpha
  uint32_t dirtyFlags;
  uint32_t paramMask;   // which parameter groups the code uses; a declaration only
  int32_t frameToggle;  // which of two height fields is current
  int32_t direction;    // 0 to 3
  float frameRate;      // frames per second
  int32_t frameNumber;
};

// An image to work on. It does not own the pixels: bytes blue, green, red, alpha.
struct EngineImage {
  uint32_t structSize;
  int32_t width;  // above 0, as are height, stepBytes and totalBytes
  int32_t height;
  int32_t bitsPerPixel;  // 32
  int32_t stepBytes;
  int32_t totalBytes;  // stepBytes * height
  uint8_t* pixels;

  uint8_t* Row(int32_t y) const { return pixels + static_cast<int64_t>(y) * stepBytes; }
};

EngineImage MakeEngineImage(uint8_t* pixels, int32_t width, int32_t height, int32_t stepBytes);

// `code` is a code::EngineCode or another one of its ranges. The caller frees the record with EngineFree.
int32_t EngineCreate(EngineRecord** out, uint32_t code);

// Works on a copy of `from` in `image`, both of one size and apart from each other, or in place if both are one.
// `second` may be null; it reaches only the merge routines, which blend it into the first.
int32_t EngineRunFrom(EngineRecord* record, const EngineImage& from, const EngineImage& image,
                      const EngineImage* second);

// Whether that works without the copy: the routine writes every pixel of `image`, unless it fails. False for null.
bool EngineSparesCopy(const EngineRecord* record);

int32_t EngineFree(EngineRecord* record);

#endif  // KVX_ENGINE_ENGINE_H_
