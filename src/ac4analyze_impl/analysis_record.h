// The analyzer's result, which the descriptor generator takes.
#pragma once

#include "ac4/descriptor_generator/analysis_record.h"  // IWYU pragma: export
