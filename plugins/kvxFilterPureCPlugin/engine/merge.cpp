#include "engine_internal.h"

int32_t EngineRunMerge(EngineRecord&, const EngineImage&, const EngineImage*) { return kEngineFailed; }
