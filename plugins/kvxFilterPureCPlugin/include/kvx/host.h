// The objects that a host gives to the plug-in, and the effect object that it gets back.
//
// Virtual functions stand in slot order. Reserved slots are never called by the plug-in; an implementation leaves them
// empty.
#ifndef KVX_HOST_H_
#define KVX_HOST_H_

#include <cstdint>

#include "kvx/records.h"

// Log levels of `HostUtilSuite::HostLog`.
inline constexpr int32_t kHostLogInfo = 2;
inline constexpr int32_t kHostLogError = 4;

// Suite "Host Util Suite": the only suite whose operations the plug-in calls.
class HostUtilSuite {
 public:
  // Writes the resource root as UTF-8, NUL-terminated and without a trailing separator, into `buffer` of `size` bytes.
  // `kind` is 1; on entry the buffer holds "resources".
  virtual void GetHostPath(int32_t kind, char* buffer, int32_t size) = 0;
  // printf style.
  virtual void HostLog(int32_t level, const char* format, ...) = 0;

 protected:
  ~HostUtilSuite() = default;
};

class HostSuiteProvider {
 public:
  // Stores the suite `name` of `version` in `*suite`, or leaves it alone. The result is ignored.
  virtual int32_t GetSuite(const char* name, int32_t version, void** suite) = 0;

 protected:
  ~HostSuiteProvider() = default;
};

// First argument of `StartupKVX`.
struct HostStartupRecord {
  void* reserved;
  HostSuiteProvider* provider;
};

// One image of a frame. The host owns the pixels; the plug-in keeps no pointer into them after `Render`.
class HostImage {
 public:
  virtual int32_t Width() = 0;   // pixels
  virtual int32_t Height() = 0;  // rows
  virtual void Reserved2() {}
  virtual int32_t Step() = 0;   // bytes from row to row
  virtual uint8_t* Data() = 0;  // first byte of row 0

 protected:
  ~HostImage() = default;
};

// One frame of one effect, given to `Prepare` and `Render`.
class HostRenderContext {
 public:
  virtual int64_t CurrentFrame() = 0;
  virtual int64_t TotalFrames() = 0;
  virtual void Reserved2() {}
  virtual void Reserved3() {}
  virtual void Reserved4() {}
  virtual void Reserved5() {}
  virtual void Reserved6() {}
  virtual void Reserved7() {}
  virtual void Reserved8() {}
  virtual void Reserved9() {}
  virtual HostImage* InputImage(int32_t index) = 0;
  virtual void Reserved11() {}
  virtual void Reserved12() {}
  virtual void Reserved13() {}
  virtual HostImage* OutputImage() = 0;
  virtual void Reserved15() {}
  virtual void Reserved16() {}
  virtual void Reserved17() {}
  // Writes the value of parameter `name` at `frame` in the form that `value->type` asks for, and returns 0. Any other
  // result leaves the parameter as it was.
  virtual int32_t ParameterValue(const char* name, int64_t frame, HostParamValue* value) = 0;

 protected:
  ~HostRenderContext() = default;
};

// Receives an effect's identity and parameters from `RegisterKVXEffect`. `group` is always -1; `index` counts from 0;
// `label` is the name again. Texts are valid during the call only.
class HostEffectRegistrar {
 public:
  virtual void Identity(const char* guid, const char* name) = 0;
  virtual void Flags(uint32_t flags) = 0;  // 0x1032, or 0x801032 for an effect that moves on a still source
  virtual void Reserved2(int32_t value) = 0;
  virtual void Reserved3() {}
  virtual void Reserved4() {}
  virtual void Float(int32_t group, int32_t index, const char* name, const char* label, float minimum, float maximum,
                     float defaultValue, int32_t visibility) = 0;
  virtual void Integer(int32_t group, int32_t index, const char* name, const char* label, int32_t minimum,
                       int32_t maximum, int32_t defaultValue, int32_t reserved, int32_t visibility) = 0;
  virtual void Color(int32_t group, int32_t index, const char* name, const char* label, int32_t defaultValue,
                     int32_t minimum, int32_t maximum, int32_t visibility) = 0;
  virtual void Reserved8() {}
  virtual void CheckBox(int32_t group, int32_t index, const char* name, const char* label, int32_t minimum,
                        int32_t maximum, int32_t defaultValue, int32_t visibility) = 0;
  virtual void Reserved10() {}
  virtual void Reserved11() {}
  virtual void Reserved12() {}
  virtual void Reserved13() {}
  virtual void Text(int32_t group, int32_t index, const char* name, const char* label, const char* reserved,
                    int32_t reserved2) = 0;
  virtual void Reserved15() {}
  virtual void Reserved16() {}
  virtual void Reserved17() {}
  virtual void Double(int32_t group, int32_t index, const char* name, const char* label, double minimum, double maximum,
                      double defaultValue, int32_t visibility) = 0;
  virtual void NinePositions(int32_t group, int32_t index, const char* name, const char* label, int32_t minimum,
                             int32_t maximum, int32_t defaultValue, int32_t reserved) = 0;
  virtual void MaskList(int32_t group, int32_t index, const char* name, const char* label, const char* reserved,
                        int32_t reserved2) = 0;
  virtual void MosaicList(int32_t group, int32_t index, const char* name, const char* label, int32_t minimum,
                          int32_t maximum, int32_t defaultValue, int32_t reserved) = 0;
  virtual void FirstColor(int32_t group, int32_t index, const char* name, const char* label, int32_t minimum,
                          int32_t maximum, int32_t defaultValue, int32_t visibility) = 0;
  virtual void LastColor(int32_t group, int32_t index, const char* name, const char* label, int32_t minimum,
                         int32_t maximum, int32_t defaultValue, int32_t visibility) = 0;
  virtual void SpecialFloat(int32_t group, int32_t index, const char* name, const char* label, float minimum,
                            float maximum, float defaultValue, int32_t visibility) = 0;

 protected:
  ~HostEffectRegistrar() = default;
};

// Statuses of exports and effect objects.
inline constexpr int32_t kStatusOk = 0;
inline constexpr int32_t kStatusBadArgument = 2;  // or unknown filter
inline constexpr int32_t kStatusUnusable = 4;     // unusable memory or missing filter

// What `CreateKVXEffect` gives. For each frame: `Prepare`, then `Render`. One thread at a time per object; different
// objects may run in parallel. The host ends it with `ReleaseKVXEffect`.
class KVXEffect {
 public:
  virtual ~KVXEffect() = default;
  virtual int32_t Reserved1() { return 0; }
  virtual int32_t Reserved2() { return 0; }
  // Fetches frame numbers and parameter values. Always 0; without a context nothing happens.
  virtual int32_t Prepare(HostRenderContext* context) = 0;
  // Renders input image 0 to the output image; the two may share memory. 0; 2 without a context or an image; 4 for
  // unusable memory, a frame of more than 2 GiB or a failed filter.
  virtual int32_t Render(HostRenderContext* context) = 0;
  virtual int32_t Reserved5() { return 0; }
  virtual int32_t Reserved6() { return 0; }
  virtual void Reserved7() {}
  virtual int32_t Reserved8() { return 0; }
  virtual int32_t Reserved9() { return 0; }
};

#endif  // KVX_HOST_H_
