#include "boundary/register_effect.h"

#include <string>

#include "boundary/registry.h"
#include "boundary/suite_store.h"
#include "framework/host_log.h"

namespace vizcore {

namespace {

constexpr uint32_t kStillFlags = 0x1032;
constexpr uint32_t kDynamicFlags = 0x801032;
constexpr int32_t kNoGroup = -1;
constexpr int32_t kVisible = 2;
constexpr int32_t kHidden = 1;
constexpr size_t kNameSize = 38;

struct Declaration {
  int32_t index;
  const char* name;
  NLEParamValue minimum;
  NLEParamValue maximum;
  NLEParamValue defaultValue;
  int32_t uiType;

  int32_t Visibility() const { return uiType == ui_type::kNoShow ? kHidden : kVisible; }
};

void DeclareFloat(const Declaration& d, HostEffectRegistrar& registrar) {
  const float minimum = d.minimum.AsFloat();
  const float maximum = d.maximum.AsFloat();
  const float value = d.defaultValue.AsFloat();
  if (d.uiType == ui_type::kMult100) {
    registrar.SpecialFloat(kNoGroup, d.index, d.name, d.name, minimum, maximum, value, kVisible);
  } else {
    registrar.Float(kNoGroup, d.index, d.name, d.name, minimum, maximum, value, d.Visibility());
  }
}

void DeclareInt(const Declaration& d, HostEffectRegistrar& registrar) {
  const int32_t minimum = d.minimum.AsInt32();
  const int32_t maximum = d.maximum.AsInt32();
  const int32_t value = d.defaultValue.AsInt32();
  switch (d.uiType) {
    case ui_type::kPlain:
    case ui_type::kNoShow:
      registrar.Integer(kNoGroup, d.index, d.name, d.name, minimum, maximum, value, 1, d.Visibility());
      break;
    case ui_type::kColor:  // the only one with the default first
      registrar.Color(kNoGroup, d.index, d.name, d.name, value, minimum, maximum, kVisible);
      break;
    case ui_type::kCheckBox:
      registrar.CheckBox(kNoGroup, d.index, d.name, d.name, minimum, maximum, value, kVisible);
      break;
    case ui_type::kNinePalaces:
      registrar.NinePositions(kNoGroup, d.index, d.name, d.name, minimum, maximum, value, 0);
      break;
    case ui_type::kListMosaic:
      registrar.MosaicList(kNoGroup, d.index, d.name, d.name, minimum, maximum, value, 0);
      break;
    case ui_type::kColorStart:
      registrar.FirstColor(kNoGroup, d.index, d.name, d.name, minimum, maximum, value, kVisible);
      break;
    case ui_type::kColorEnd:
      registrar.LastColor(kNoGroup, d.index, d.name, d.name, minimum, maximum, value, kVisible);
      break;
    default:
      break;
  }
}

void Declare(const Declaration& d, ParamKind kind, HostEffectRegistrar& registrar) {
  switch (kind) {
    case ParamKind::kDouble:
      registrar.Double(kNoGroup, d.index, d.name, d.name, d.minimum.AsDouble(), d.maximum.AsDouble(),
                       d.defaultValue.AsDouble(), d.Visibility());
      break;
    case ParamKind::kFloat:
      DeclareFloat(d, registrar);
      break;
    case ParamKind::kInt32:
      DeclareInt(d, registrar);
      break;
    case ParamKind::kText:
      if (d.uiType == ui_type::kListMask) {
        registrar.MaskList(kNoGroup, d.index, d.name, d.name, nullptr, 0);
      } else {
        registrar.Text(kNoGroup, d.index, d.name, d.name, nullptr, 0);
      }
      break;
    default:
      break;
  }
}

}  // namespace

int32_t RegisterEffect(const std::shared_ptr<NLEFilterInfo>& info, HostEffectRegistrar& registrar) {
  HostUtilSuite* host = SuiteStore::Get().hostUtil;
  PureCFilter* registry = PureCFilter::GetInstance();
  const std::string guid = info->Guid();
  const std::shared_ptr<NLEFilterInfo> found = registry ? registry->GetNLEFilterInfoByName(guid) : nullptr;
  if (!found) {
    Log(host, kHostLogError, "PureCFilter::GetNLEFilterInfoByName Failed: %s", guid.c_str());
    return kStatusBadArgument;
  }
  const std::string name = found->Name();
  registrar.Identity(guid.c_str(), name.c_str());
  registrar.Flags(found->GetDynamic() != 0 ? kDynamicFlags : kStillFlags);
  registrar.Reserved2(0);
  const int32_t count = found->GetParamCount();
  for (int32_t i = 0; i < count; ++i) {
    std::shared_ptr<NLEFilterParams> params;
    found->GetParam(params, i);
    if (!params) continue;
    char paramName[kNameSize];
    params->GetName(paramName, sizeof paramName);
    Declaration declaration{i, paramName, {}, {}, {}, params->GetUiType()};
    params->GetRange(declaration.minimum, declaration.maximum);
    params->GetDefault(declaration.defaultValue);
    Declare(declaration, params->GetKind(), registrar);
  }
  Log(host, kHostLogInfo, "Register PureC Effect Success: %s %s", guid.c_str(), name.c_str());
  return kStatusOk;
}

}  // namespace vizcore
