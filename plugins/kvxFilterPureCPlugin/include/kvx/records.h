// Plain records that cross the boundary between a host and the plug-in. Their layouts are fixed.
#ifndef KVX_RECORDS_H_
#define KVX_RECORDS_H_

#include <cstddef>
#include <cstdint>

// What `StartupKVX` fills. All texts are static and valid while the library is loaded.
struct PluginStartupInfo {
  int32_t reserved0;  // 1
  int32_t reserved1;  // 1
  const char* name;
  const char* vendor;  // reverse-domain form
  const char* description;
  const char* reserved2;  // empty
  uint32_t filterCount;   // number of effects that the catalogue offers, by distinct GUID
  uint8_t reserved3;      // 0
};
static_assert(sizeof(PluginStartupInfo) == 48);
static_assert(offsetof(PluginStartupInfo, reserved1) == 4);
static_assert(offsetof(PluginStartupInfo, name) == 8);
static_assert(offsetof(PluginStartupInfo, vendor) == 16);
static_assert(offsetof(PluginStartupInfo, description) == 24);
static_assert(offsetof(PluginStartupInfo, reserved2) == 32);
static_assert(offsetof(PluginStartupInfo, filterCount) == 40);
static_assert(offsetof(PluginStartupInfo, reserved3) == 44);

// One row of the effect table, as `GetEffectPluginsInfo` gives it. UTF-16 texts end in NUL.
struct EffectPluginInfo {
  int32_t reserved;  // 0
  int32_t effectId;
  char16_t name[64];   // display name; two effects may share one
  int32_t paramCount;  // parameters that the processor reports
  char16_t guid[196];  // 36 characters, unique, compared byte for byte
};
static_assert(sizeof(EffectPluginInfo) == 532);
static_assert(offsetof(EffectPluginInfo, effectId) == 4);
static_assert(offsetof(EffectPluginInfo, name) == 8);
static_assert(offsetof(EffectPluginInfo, paramCount) == 136);
static_assert(offsetof(EffectPluginInfo, guid) == 140);

// The value of one parameter, as a host hands it over at one frame.
struct HostParamValue {
  // Which member of `value` the plug-in asks for; set by the plug-in before the call.
  enum Type : int32_t { kInt32 = 3, kNone = 4, kFloat = 5, kDouble = 6, kByte = 7, kText = 8, kInt64 = 9 };

  int32_t type;
  union {
    int32_t int32;
    float float32;
    double float64;
    uint8_t byte;
    const char* text;  // the host's; needs to stay valid only until the plug-in has copied it
    int64_t int64;
  } value;
  uint8_t host[56];  // the host's own; the plug-in does not read it
};
static_assert(sizeof(HostParamValue) == 72);
static_assert(offsetof(HostParamValue, type) == 0);
static_assert(offsetof(HostParamValue, value) == 8);
static_assert(offsetof(HostParamValue, host) == 16);

// One parameter as a processor describes it. The caller zeroes the record first.
struct FilterParamDesc {
  // kDuration counts milliseconds, kColor is 0xRRGGBB.
  enum Type : int32_t { kRanged = 0, kOnOff = 1, kReal = 2, kDuration = 3, kColor = 4 };

  int32_t index;
  char16_t name[32];  // NUL-terminated
  int32_t type;
  double minimum;
  double defaultValue;  // the processor's current state: after a frame, the value of that frame
  double maximum;
};
static_assert(sizeof(FilterParamDesc) == 96);
static_assert(offsetof(FilterParamDesc, name) == 4);
static_assert(offsetof(FilterParamDesc, type) == 68);
static_assert(offsetof(FilterParamDesc, minimum) == 72);
static_assert(offsetof(FilterParamDesc, defaultValue) == 80);
static_assert(offsetof(FilterParamDesc, maximum) == 88);

// The values of one frame for a processor: thirteen 8-byte elements, element 0 being the effect id.
struct ParamValueArray {
  int32_t effectId;
  int32_t reserved;  // 0
  double value[12];  // elements 1 to 12: parameters in catalogue order, 0.0 where there is none
};
static_assert(sizeof(ParamValueArray) == 104);
static_assert(offsetof(ParamValueArray, value) == 8);

#endif  // KVX_RECORDS_H_
