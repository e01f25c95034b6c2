// A host for tests: the library opened afresh, suites that record, a directory of its own for catalogue files.
#ifndef KVX_TESTS_SUPPORT_FAKE_HOST_H_
#define KVX_TESTS_SUPPORT_FAKE_HOST_H_

#include <filesystem>
#include <map>
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
  void Identity(const char* guid, const char* name) override;
  void Flags(uint32_t flags) override;
  void Reserved2(int32_t value) override;
  void Float(int32_t g, int32_t i, const char* n, const char* l, float a, float b, float c, int32_t v) override;
  void Integer(int32_t g, int32_t i, const char* n, const char* l, int32_t a, int32_t b, int32_t c, int32_t r,
               int32_t v) override;
  void Color(int32_t g, int32_t i, const char* n, const char* l, int32_t a, int32_t b, int32_t c, int32_t v) override;
  void CheckBox(int32_t g, int32_t i, const char* n, const char* l, int32_t a, int32_t b, int32_t c,
                int32_t v) override;
  void Text(int32_t g, int32_t i, const char* n, const char* l, const char* r, int32_t v) override;
  void Double(int32_t g, int32_t i, const char* n, const char* l, double a, double b, double c, int32_t v) override;
  void NinePositions(int32_t g, int32_t i, const char* n, const char* l, int32_t a, int32_t b, int32_t c,
                     int32_t v) override;
  void MaskList(int32_t g, int32_t i, const char* n, const char* l, const char* r, int32_t v) override;
  void MosaicList(int32_t g, int32_t i, const char* n, const char* l, int32_t a, int32_t b, int32_t c,
                  int32_t v) override;
  void FirstColor(int32_t g, int32_t i, const char* n, const char* l, int32_t a, int32_t b, int32_t c,
                  int32_t v) override;
  void LastColor(int32_t g, int32_t i, const char* n, const char* l, int32_t a, int32_t b, int32_t c,
                 int32_t v) override;
  void SpecialFloat(int32_t g, int32_t i, const char* n, const char* l, float a, float b, float c, int32_t v) override;

  std::vector<std::string> calls;
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
