// A host that takes no memory itself and keeps nothing, for tests that watch memory.
#ifndef KVX_TESTS_SUPPORT_QUIET_HOST_H_
#define KVX_TESTS_SUPPORT_QUIET_HOST_H_

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "kvx/host.h"

class QuietUtil : public HostUtilSuite {
 public:
  void GetHostPath(int32_t, char* buffer, int32_t size) override {
    std::snprintf(buffer, static_cast<size_t>(size), "%s", root);
  }
  void HostLog(int32_t level, const char* format, ...) override {
    char text[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    if (level == 4 && std::strstr(text, "alloc failed file[plugins/kvxFilterPureCPlugin/Source/") == text) ++failures;
  }

  const char* root = ".";
  int failures = 0;  // allocations that effects reported
};

class QuietProvider : public HostSuiteProvider {
 public:
  int32_t GetSuite(const char* name, int32_t, void** suite) override {
    if (std::strcmp(name, "Host Util Suite") == 0) *suite = &util;
    return 0;
  }
  QuietUtil util;
};

class QuietRegistrar : public HostEffectRegistrar {
 public:
  using Name = const char*;
  using Int = int32_t;
  // A parameter that is a number.
  virtual void Number(Name, double /*minimum*/, double /*maximum*/) {}

  void Identity(Name, Name) override {}
  void Flags(uint32_t) override {}
  void Reserved2(Int) override {}
  void Float(Int, Int, Name n, Name, float a, float b, float, Int) override { Number(n, a, b); }
  void Integer(Int, Int, Name n, Name, Int a, Int b, Int, Int, Int) override { Number(n, a, b); }
  void Color(Int, Int, Name n, Name, Int, Int a, Int b, Int) override { Number(n, a, b); }
  void CheckBox(Int, Int, Name n, Name, Int a, Int b, Int, Int) override { Number(n, a, b); }
  void Text(Int, Int, Name, Name, Name, Int) override {}
  void Double(Int, Int, Name n, Name, double a, double b, double, Int) override { Number(n, a, b); }
  void NinePositions(Int, Int, Name n, Name, Int a, Int b, Int, Int) override { Number(n, a, b); }
  void MaskList(Int, Int, Name, Name, Name, Int) override {}
  void MosaicList(Int, Int, Name n, Name, Int a, Int b, Int, Int) override { Number(n, a, b); }
  void FirstColor(Int, Int, Name n, Name, Int a, Int b, Int, Int) override { Number(n, a, b); }
  void LastColor(Int, Int, Name n, Name, Int a, Int b, Int, Int) override { Number(n, a, b); }
  void SpecialFloat(Int, Int, Name n, Name, float a, float b, float, Int) override { Number(n, a, b); }
};

#endif  // KVX_TESTS_SUPPORT_QUIET_HOST_H_
