#include "engine_internal.h"

int32_t EngineRunWarp(EngineRecord&, const EngineImage&) { return kEngineFailed; }
