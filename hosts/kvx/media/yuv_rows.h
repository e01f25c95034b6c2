// Rows of 8-bit luma and colour differences to rows of BGRA and back, in vectors.
#ifndef KVX_HOSTS_KVX_MEDIA_YUV_ROWS_H_
#define KVX_HOSTS_KVX_MEDIA_YUV_ROWS_H_

#include <cstddef>
#include <cstdint>

namespace kvx {

// What turns samples into colours, in 1/8192.
struct YuvToRgb {
  int32_t black;  // the luma of black: 16 or 0
  int32_t y, vToRed, uToGreen, vToGreen, uToBlue;
};

// What turns colours into samples from 16 to 235 and 240, in 1/32768.
struct RgbToYuv {
  int32_t y[3], u[3], v[3];  // of red, green, blue
  bool fullRange;            // the samples are spread to 0 to 255 at the end
};

// Columns of luma that share a sample of colour: 1 << `shift`, where `shift` is 0 or 1. With 1 `width` is even.
// Alpha becomes 255.
void YuvRowToBgra(const uint8_t* y, const uint8_t* u, const uint8_t* v, int shift, const YuvToRgb& by, uint8_t* bgra,
                  size_t width);

// Luma of a row. Returns false if an alpha in it is below 255.
bool BgraRowToLuma(const uint8_t* bgra, const RgbToYuv& by, uint8_t* y, size_t width);

// Colour of one row, or of two that share it; `second` is null for one. `shift` as above.
void BgraRowToColor(const uint8_t* first, const uint8_t* second, int shift, const RgbToYuv& by, uint8_t* u, uint8_t* v,
                    size_t width);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_YUV_ROWS_H_
