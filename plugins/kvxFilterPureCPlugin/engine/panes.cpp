#include "engine_internal.h"

std::span<const LookRoutine> PaneRoutines() { return {}; }
