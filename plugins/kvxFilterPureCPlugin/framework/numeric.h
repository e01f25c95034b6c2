// Numbers as the effects use them.
#ifndef KVX_FRAMEWORK_NUMERIC_H_
#define KVX_FRAMEWORK_NUMERIC_H_

#include <cstdint>

// A 64-bit float cut toward zero. What does not fit, NaN included, gives INT32_MIN.
inline int32_t Trunc32(double value) {
  return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int32_t>(value) : INT32_MIN;
}

// The low byte of the cut value.
inline uint8_t TruncByte(double value) {
  return static_cast<uint8_t>(Trunc32(value));
}

// 0 for values at or below 0, 255 for values above 255, otherwise the value. Branch-free by two sign masks.
inline int32_t CLAMP0255(int32_t value) {
  const int32_t positive = static_cast<int32_t>(-static_cast<int64_t>(value) >> 63);
  const int32_t over = static_cast<int32_t>((255 - static_cast<int64_t>(value)) >> 63);
  return ((value & ~over) | over) & positive & 255;
}

// `low` if it is above the value, else `high` if the value is above it, else the value: in this order.
inline double ClampFloat(double value, double low, double high) {
  return low > value ? low : value > high ? high : value;
}

// `low` if the value is below it, else the smaller of value and `high`: in this order.
inline int32_t ClampInt(int32_t value, int32_t low, int32_t high) {
  return value < low ? low : value < high ? value : high;
}

// 32-bit arithmetic that wraps.
inline int32_t WrapAdd(int32_t a, int32_t b) {
  return static_cast<int32_t>(uint32_t(a) + uint32_t(b));
}
inline int32_t WrapSub(int32_t a, int32_t b) {
  return static_cast<int32_t>(uint32_t(a) - uint32_t(b));
}
inline int32_t WrapMul(int32_t a, int32_t b) {
  return static_cast<int32_t>(uint32_t(a) * uint32_t(b));
}

#endif  // KVX_FRAMEWORK_NUMERIC_H_
