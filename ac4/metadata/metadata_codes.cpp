#include "ac4/metadata/metadata_codes.h"

namespace mediasplit {

std::uint32_t metadata_code(FieldError error) {
    if (error == FieldError::kNone) {
        return kMetadataOk;
    }
    return error == FieldError::kTooLong ? kMetadataTooLong : kMetadataRanOut;
}

}  // namespace mediasplit
