#include "ac4/metadata/metadata_codes.h"

namespace mediasplit {

std::uint32_t metadata_code(FieldError error) {
    switch (error) {
        case FieldError::kNone:
            return kMetadataOk;
        case FieldError::kTooLong:
            return kMetadataTooLong;
        case FieldError::kRanOut:
        case FieldError::kHook:
            break;
    }
    return kMetadataRanOut;
}

}  // namespace mediasplit
