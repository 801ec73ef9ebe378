// What every enhancement stream needs of its container.
#pragma once

#include "src/fmp4demuxer/checks/prisma_stream.h"
#include "src/log/status.h"

namespace mediasplit {

// A Representation's MIME type (4117).
[[nodiscard]] Status check_mime_type(const PrismaStream& prisma);

// The rules on the container that all profiles but 20 share: brand, track header, configuration
// box, level, version, MIME type.
[[nodiscard]] Status prsm_genenral_validation(const PrismaStream& prisma);

}  // namespace mediasplit
