// A host for tests: the library opened afresh, suites that record, a directory of its own for catalogue files.
#ifndef KVX_TESTS_SUPPORT_FAKE_HOST_H_
#define KVX_TESTS_SUPPORT_FAKE_HOST_H_

#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "kvx/exports.h"
#include "tests/support/frames.h"

// A directory that goes away with the object.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  const std::filesystem::path& Path() const { return path_; }
  // Writes a file, making its directories.
  void Write(const std::string& name, const std::string& content) const;

 private:
  std::filesystem::path path_;
};

struct LogLine {
  int32_t level;
  std::string text;
  bool operator==(const LogLine&) const = default;
};

class FakeUtil : public HostUtilSuite {
 public:
  void GetHostPath(int32_t kind, char* buffer, int32_t size) override;
  void HostLog(int32_t level, const char* format, ...) override;

  std::string root;
  bool endsPath = true;  // false: the path fills the buffer, and no end stands behind it
  std::vector<LogLine> log;
  std::string asked;  // what GetHostPath was called with
};

class FakeProvider : public HostSuiteProvider {
 public:
  int32_t GetSuite(const char* name, int32_t version, void** suite) override;
  FakeUtil util;
  bool offersUtil = true;
  std::vector<std::string> asked;
};

// Every call as one line of text: "slot 5: -1 0 Name Name 0 100 50 2".
class FakeRegistrar : public HostEffectRegistrar {
 public:
  using Int = int32_t;
  using Name = const char*;
  void Identity(Name guid, Name name) override { Add(0, guid, name); }
  void Flags(uint32_t flags) override { Add(1, flags); }
  void Reserved2(Int value) override { Add(2, value); }
  void Float(Int g, Int i, Name n, Name l, float a, float b, float c, Int v) override {
    Add(5, g, i, n, l, a, b, c, v);
  }
  void Integer(Int g, Int i, Name n, Name l, Int a, Int b, Int c, Int r, Int v) override {
    Add(6, g, i, n, l, a, b, c, r, v);
  }
  void Color(Int g, Int i, Name n, Name l, Int a, Int b, Int c, Int v) override { Add(7, g, i, n, l, a, b, c, v); }
  void CheckBox(Int g, Int i, Name n, Name l, Int a, Int b, Int c, Int v) override { Add(9, g, i, n, l, a, b, c, v); }
  void Text(Int g, Int i, Name n, Name l, Name r, Int v) override { Add(14, g, i, n, l, r ? r : "null", v); }
  void Double(Int g, Int i, Name n, Name l, double a, double b, double c, Int v) override {
    Add(18, g, i, n, l, a, b, c, v);
  }
  void NinePositions(Int g, Int i, Name n, Name l, Int a, Int b, Int c, Int v) override {
    Add(19, g, i, n, l, a, b, c, v);
  }
  void MaskList(Int g, Int i, Name n, Name l, Name r, Int v) override { Add(20, g, i, n, l, r ? r : "null", v); }
  void MosaicList(Int g, Int i, Name n, Name l, Int a, Int b, Int c, Int v) override {
    Add(21, g, i, n, l, a, b, c, v);
  }
  void FirstColor(Int g, Int i, Name n, Name l, Int a, Int b, Int c, Int v) override {
    Add(22, g, i, n, l, a, b, c, v);
  }
  void LastColor(Int g, Int i, Name n, Name l, Int a, Int b, Int c, Int v) override { Add(23, g, i, n, l, a, b, c, v); }
  void SpecialFloat(Int g, Int i, Name n, Name l, float a, float b, float c, Int v) override {
    Add(24, g, i, n, l, a, b, c, v);
  }

  std::vector<std::string> calls;

 private:
  template <typename... Args>
  void Add(int slot, const Args&... args) {
    std::ostringstream out;
    out << "slot " << slot << ":";
    ((out << ' ' << args), ...);
    calls.push_back(out.str());
  }
};

class FakeImage : public HostImage {
 public:
  FakeImage() = default;
  explicit FakeImage(FrameBuffer& frame)
      : width(frame.Width()), height(frame.Height()), step(frame.Step()), data(frame.Data()) {}
  int32_t Width() override { return width; }
  int32_t Height() override { return height; }
  int32_t Step() override { return step; }
  uint8_t* Data() override { return data; }

  int32_t width = 0;
  int32_t height = 0;
  int32_t step = 0;
  uint8_t* data = nullptr;
};

class FakeContext : public HostRenderContext {
 public:
  int64_t CurrentFrame() override { return frame; }
  int64_t TotalFrames() override { return total; }
  HostImage* InputImage(int32_t index) override { return index == 0 ? input : nullptr; }
  HostImage* OutputImage() override { return output; }
  int32_t ParameterValue(const char* name, int64_t atFrame, HostParamValue* value) override;

  int64_t frame = 0;
  int64_t total = 100;
  HostImage* input = nullptr;
  HostImage* output = nullptr;
  std::map<std::string, double> numbers;
  std::map<std::string, std::string> texts;
  std::vector<std::string> asked;  // "name type frame"
};

// The library, opened and closed with the object: the process-wide registry does not come back within one load.
class LoadedPlugin {
 public:
  LoadedPlugin();
  ~LoadedPlugin();

  // Starts with this resource root.
  PluginStartupInfo Start(const std::string& root);

  decltype(&::StartupKVX) startup;
  decltype(&::ShutdownKVX) shutdown;
  decltype(&::RegisterKVXEffect) registerEffect;
  decltype(&::RegisterKVXEffectFromConfPath) registerFromPath;
  decltype(&::CreateKVXEffect) create;
  decltype(&::ReleaseKVXEffect) release;
  decltype(&::GetEffectsCounts) counts;
  decltype(&::GetEffectPluginsInfo) info;
  decltype(&::FindEffectByID) find;
  decltype(&::GetEffectPixFormat) pixFormat;
  decltype(&::SetMergeImagePath) setMergePath;
  FakeProvider provider;

 private:
  void* library_;
};

// GUID of a table row, as narrow text.
std::string GuidOf(int32_t id);

#endif  // KVX_TESTS_SUPPORT_FAKE_HOST_H_
