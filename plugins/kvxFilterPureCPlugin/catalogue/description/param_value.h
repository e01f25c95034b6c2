// Parameters of a filter description and the values they carry.
#ifndef KVX_DESCRIPTION_PARAM_VALUE_H_
#define KVX_DESCRIPTION_PARAM_VALUE_H_

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace vizcore {

enum class ParamKind : int32_t {
  kNone = 0,
  kBool = 1,
  kDouble = 2,
  kFloat = 3,
  kUnconverted = 4,
  kInt32 = 5,
  kText = 6,
  kInt64 = 7,
};

// Eight bytes whose reading depends on the kind, and a text for kind 6.
class NLEParamValue {
 public:
  NLEParamValue() = default;
  static NLEParamValue Of(double value) { return NLEParamValue(ParamKind::kDouble, value); }
  static NLEParamValue Of(float value) { return NLEParamValue(ParamKind::kFloat, value); }
  static NLEParamValue Of(int32_t value) { return NLEParamValue(ParamKind::kInt32, value); }
  static NLEParamValue Of(int64_t value) { return NLEParamValue(ParamKind::kInt64, value); }
  static NLEParamValue Of(uint8_t value) { return NLEParamValue(ParamKind::kBool, value); }
  static NLEParamValue OfText(std::string text);

  double AsDouble() const { return As<double>(); }
  float AsFloat() const { return As<float>(); }
  int32_t AsInt32() const { return As<int32_t>(); }
  int64_t AsInt64() const { return As<int64_t>(); }
  uint8_t AsByte() const { return As<uint8_t>(); }

  std::string text;
  ParamKind kind = ParamKind::kNone;

 private:
  template <typename T>
  NLEParamValue(ParamKind ofKind, T value) : kind(ofKind) {
    std::memcpy(&scalar_, &value, sizeof value);
  }
  template <typename T>
  T As() const {
    T value;
    std::memcpy(&value, &scalar_, sizeof value);
    return value;
  }

  uint64_t scalar_ = 0;
};

// How a host shows a parameter. Only the declaration to the host reads it.
namespace ui_type {
inline constexpr int32_t kPlain = 0;
inline constexpr int32_t kColor = 1;
inline constexpr int32_t kCheckBox = 2;
inline constexpr int32_t kNinePalaces = 3;
inline constexpr int32_t kNoShow = 9;
inline constexpr int32_t kListMask = 13;
inline constexpr int32_t kGradientColor = 14;
inline constexpr int32_t kFilePath = 18;
inline constexpr int32_t kListMosaic = 21;
inline constexpr int32_t kColorStart = 22;
inline constexpr int32_t kColorEnd = 23;
inline constexpr int32_t kMult100 = 25;
inline constexpr int32_t kTextEdit = 26;
}  // namespace ui_type

// The code of a catalogue's word, by exact comparison; 0 for any other.
int32_t UiTypeOfWord(std::string_view word);

// One parameter: name, kind, range, default, current value. Always held by shared pointer.
class NLEFilterParams {
 public:
  void SetName(const char* name) { name_ = name; }
  void SetAlias(const char* alias) { alias_ = alias; }
  // Copies at most size - 1 characters and a NUL.
  void GetName(char* out, size_t size) const;

  ParamKind GetKind() const { return kind_; }
  void SetKind(ParamKind kind) { kind_ = kind; }
  int32_t GetUiType() const { return uiType_; }
  void SetUiType(int32_t type) { uiType_ = type; }

  void SetRange(const NLEParamValue& minimum, const NLEParamValue& maximum);
  void GetRange(NLEParamValue& minimum, NLEParamValue& maximum) const;
  void SetDefault(const NLEParamValue& value) { default_ = value; }
  void GetDefault(NLEParamValue& out) const { out = default_; }

  // In a text parameter the first "file:/" of the text is cut out, which hosts put before a path.
  void SetValue(const NLEParamValue& value);
  // The kind given is the parameter's own, not that of the stored value.
  void GetValue(NLEParamValue& out) const;

  void Clone(std::shared_ptr<NLEFilterParams>& out) const;

 private:
  std::string alias_;
  std::string name_;
  ParamKind kind_ = ParamKind::kNone;
  int32_t uiType_ = ui_type::kPlain;
  NLEParamValue minimum_;
  NLEParamValue maximum_;
  NLEParamValue default_;
  NLEParamValue current_;
};

}  // namespace vizcore

#endif  // KVX_DESCRIPTION_PARAM_VALUE_H_
