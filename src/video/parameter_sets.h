// All parameter sets of H.264 and H.265.
#pragma once

#include "src/video/avc_parameter_sets.h"   // IWYU pragma: export
#include "src/video/hevc_parameter_sets.h"  // IWYU pragma: export
#include "src/video/nal_unit.h"             // IWYU pragma: export
