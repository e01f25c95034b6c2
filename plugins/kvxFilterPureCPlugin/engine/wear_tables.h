// What dirt looks like.
#ifndef KVX_ENGINE_WEAR_TABLES_H_
#define KVX_ENGINE_WEAR_TABLES_H_

#include <cstdint>

inline constexpr int32_t kStampCount = 6;
inline constexpr int32_t kStampSize = 10;

// Grey, dark on 255.
extern const uint8_t kStamps[kStampCount][kStampSize][kStampSize];

#endif  // KVX_ENGINE_WEAR_TABLES_H_
