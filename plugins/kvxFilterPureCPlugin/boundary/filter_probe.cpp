#include "boundary/filter_probe.h"

#include <algorithm>
#include <optional>
#include <string>

#include "framework/host_log.h"
#include "kvx/exports.h"
#include "platform/text.h"

namespace vizcore {

namespace {

// Nothing if the text has no end within the record.
std::optional<std::string> NarrowGuid(const EffectPluginInfo& record) {
  const auto* end = std::find(std::begin(record.guid), std::end(record.guid), u'\0');
  if (end == std::end(record.guid)) return std::nullopt;
  return NarrowUtf8({record.guid, static_cast<size_t>(end - record.guid)});
}

}  // namespace

FilterProbe CreatePureCFilterFromInfo(HostUtilSuite* host, const std::shared_ptr<NLEFilterInfo>& info, bool create) {
  FilterProbe probe;
  if (!info) return probe;
  const int32_t count = GetEffectsCounts();
  for (int32_t index = 0; index < count; ++index) {
    const EffectPluginInfo* record = GetEffectPluginsInfo(static_cast<uint32_t>(index));
    const std::optional<std::string> guid = NarrowGuid(*record);
    if (!guid) {
      Log(host, kHostLogError, "CreatePureCFilterFromInfo Failed index: %d , count: %d", index, count);
      continue;
    }
    if (*guid != info->Guid()) continue;
    CBaseFilterProc* made = nullptr;
    if (!FindEffectByID(record->effectId, 1, 1, &made) || !made) continue;
    const std::unique_ptr<CBaseFilterProc> processor(made);
    info->SetMarkers(1, 0, 0);
    probe.exists = true;
    if (create) {
      probe.filter = std::make_unique<NLEPureCFilter>(info);
      probe.filter->Init(FindEffectByID, record);
    }
    return probe;
  }
  return probe;
}

}  // namespace vizcore
