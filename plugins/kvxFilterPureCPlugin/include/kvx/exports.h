// The eleven functions that kvxFilterPureCPlugin.so exports. A host opens the library at run time and takes them by
// name.
//
// Where they live: StartupKVX, ShutdownKVX, RegisterKVXEffect, RegisterKVXEffectFromConfPath, CreateKVXEffect and
// ReleaseKVXEffect in boundary/exports.cpp; GetEffectsCounts, GetEffectPluginsInfo, FindEffectByID and
// GetEffectPixFormat in framework/factory/factory.cpp; SetMergeImagePath in framework/material_path.cpp.
//
// Order of calls: StartupKVX once; RegisterKVXEffect for each index below PluginStartupInfo::filterCount;
// CreateKVXEffect, frames, ReleaseKVXEffect; ShutdownKVX once. To start again, unload the library first.
#ifndef KVX_EXPORTS_H_
#define KVX_EXPORTS_H_

#include <cstdint>

#include "kvx/host.h"
#include "kvx/processor.h"
#include "kvx/records.h"

#define KVX_EXPORT __attribute__((visibility("default")))

extern "C" {

// Takes the host's suites, reads the catalogue and fills `info`. Always 0. Without `host` or its provider there are no
// suites; `info` may be null. Exceptions of a malformed catalogue (a value of a wrong type) pass through, and so does
// std::bad_alloc, after which the host can call it again.
KVX_EXPORT int32_t StartupKVX(HostStartupRecord* host, PluginStartupInfo* info);

// Drops the catalogue. Effect objects that exist stay valid. Always 0.
KVX_EXPORT int32_t ShutdownKVX();

// Declares effect `index` of the catalogue to `registrar`. 0, or 2 for a bad index, a null registrar or an unknown
// effect, or 4 if something below fails, for lack of memory say.
KVX_EXPORT int32_t RegisterKVXEffect(int32_t index, HostEffectRegistrar* registrar);

// Declares the effect whose configuration stands in the directory `path` (UTF-8). 0, or 2 if there is none or an
// argument is null, or 4 if something below fails. Exceptions of a malformed configuration pass through.
KVX_EXPORT int32_t RegisterKVXEffectFromConfPath(const char* path, HostEffectRegistrar* registrar);

// Makes an effect object for `guid`; `reserved` is 0. 0, or with `*effect` left alone 2, or 4 if something below fails.
KVX_EXPORT int32_t CreateKVXEffect(const char* guid, int32_t reserved, KVXEffect** effect);

// Ends an effect object of this plug-in; anything else, null included, is ignored.
KVX_EXPORT int32_t ReleaseKVXEffect(KVXEffect* effect);

// Number of rows of the effect table.
KVX_EXPORT int32_t GetEffectsCounts();

// Row `index` of the effect table, or null beyond it. Valid while the library is loaded.
KVX_EXPORT const EffectPluginInfo* GetEffectPluginsInfo(uint32_t index);

// Makes the processor of effect `id` for frames of `width` by `height`. 1, with the processor, which the caller
// deletes, in `*processor`; or 0 with `*processor` left alone: for an unknown id, a null `processor`, or if something
// below fails. The size is taken as it is given.
KVX_EXPORT int32_t FindEffectByID(int32_t id, uint32_t width, uint32_t height, CBaseFilterProc** processor);

// 0: the one pixel format there is.
KVX_EXPORT int32_t GetEffectPixFormat();

// Names the directory above "Merge", where processors made from now on find their material images. 1, or 0 for null.
KVX_EXPORT int32_t SetMergeImagePath(const char16_t* path);

}  // extern "C"

#endif  // KVX_EXPORTS_H_
