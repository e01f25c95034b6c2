#include "kvx/exports.h"

#include <exception>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "boundary/effect_object.h"
#include "boundary/filter_probe.h"
#include "boundary/register_effect.h"
#include "boundary/registry.h"
#include "boundary/suite_store.h"
#include "catalogue/catalogue_loader.h"
#include "framework/host_log.h"

using vizcore::NLEFilterInfo;
using vizcore::PureCFilter;
using vizcore::SuiteStore;

namespace {

// What an export says when a library below it throws: its callers need not be C++.
template <typename Operation>
int32_t UnusableIfItThrows(Operation operation) {
  try {
    return operation();
  } catch (const std::exception&) {
    return kStatusUnusable;
  }
}

int32_t RegisterByIndex(int32_t index, HostEffectRegistrar* registrar) {
  if (index < 0 || !registrar) return kStatusBadArgument;
  PureCFilter* registry = PureCFilter::GetInstance();
  const std::shared_ptr<NLEFilterInfo> info = registry ? registry->At(static_cast<size_t>(index)) : nullptr;
  if (!info) return kStatusBadArgument;
  return vizcore::RegisterEffect(info, *registrar);
}

// What a malformed catalogue raises passes through; the rest is a status.
int32_t RegisterFromDirectory(const char* path, HostEffectRegistrar* registrar) {
  if (!path) return kStatusBadArgument;
  PureCFilter::GetInstance();
  HostUtilSuite* host = SuiteStore::Get().hostUtil;
  std::vector<std::shared_ptr<NLEFilterInfo>> infos;
  try {
    infos = vizcore::ScanFilterDirectory(host, path);
  } catch (const std::bad_alloc&) {
    return kStatusUnusable;
  } catch (const std::runtime_error&) {
    return kStatusUnusable;
  }
  return UnusableIfItThrows([&] {
    if (infos.empty()) {
      Log(host, kHostLogError, "Register PureCFilter Failed: %s", path);
      return kStatusBadArgument;
    }
    if (!registrar) return kStatusBadArgument;
    return vizcore::RegisterEffect(infos.front(), *registrar);
  });
}

int32_t CreateEffect(const char* guid, int32_t reserved, KVXEffect** effect) {
  if (reserved != 0 || !guid || !effect) return kStatusBadArgument;
  HostUtilSuite* host = SuiteStore::Get().hostUtil;
  PureCFilter* registry = PureCFilter::GetInstance();
  const std::shared_ptr<NLEFilterInfo> info = registry ? registry->GetNLEFilterInfoByName(guid) : nullptr;
  if (!info) {
    Log(host, kHostLogError, "Create PureC Effect Failed: %s", guid);
    return kStatusBadArgument;
  }
  std::shared_ptr<vizcore::NLEPureCFilter> filter = vizcore::CreatePureCFilterFromInfo(host, info, true).filter;
  auto object = std::make_unique<vizcore::KVXPureCPluginFilterEffect>(info);
  // Without a filter the object exists all the same, and fails its renders.
  object->SetFilter(std::move(filter));
  *effect = object.release();
  Log(host, kHostLogInfo, "Create PureC Effect Success: %s", guid);
  return kStatusOk;
}

}  // namespace

int32_t StartupKVX(HostStartupRecord* host, PluginStartupInfo* info) {
  if (host && host->provider) SuiteStore::Get().Acquire(*host->provider);
  PureCFilter* registry = PureCFilter::GetInstance();
  if (registry) registry->LoadFilters();
  if (!info) return kStatusOk;
  *info = {1,
           1,
           "PureCPluginFilter",
           "org.kvx.purecfilter",
           "PureCPluginFilter Desc",
           "",
           static_cast<uint32_t>(registry ? registry->Count() : 0),
           0};
  return kStatusOk;
}

int32_t ShutdownKVX() {
  PureCFilter::Destroy();
  return kStatusOk;
}

int32_t RegisterKVXEffect(int32_t index, HostEffectRegistrar* registrar) {
  return UnusableIfItThrows([&] { return RegisterByIndex(index, registrar); });
}

int32_t RegisterKVXEffectFromConfPath(const char* path, HostEffectRegistrar* registrar) {
  return RegisterFromDirectory(path, registrar);
}

int32_t CreateKVXEffect(const char* guid, int32_t reserved, KVXEffect** effect) {
  return UnusableIfItThrows([&] { return CreateEffect(guid, reserved, effect); });
}

int32_t ReleaseKVXEffect(KVXEffect* effect) {
  delete dynamic_cast<vizcore::KVXPureCPluginFilterEffect*>(effect);
  return kStatusOk;
}
