#pragma once

#include <cstdint>

#include "ac4/syntax/field_reader.h"

namespace mediasplit {

// Results of the metadata readers. The first three leave the rest of the frame readable and may
// stand together in one result; the others stand alone and end the reading of their substream.
inline constexpr std::uint32_t kMetadataOk = 0;
inline constexpr std::uint32_t kMetadataNotUnderstood = 32;   // a part contradicts its own size
inline constexpr std::uint32_t kMetadataDeConfigUnseen = 64;  // dialogue enhancement, no setup yet
inline constexpr std::uint32_t kMetadataImsVersion = 128;     // immersive stereo version 3
inline constexpr std::uint32_t kMetadataDrcConfigUnseen = 256;  // DRC data before its setup
inline constexpr std::uint32_t kMetadataRanOut = 8192;          // the data ended
inline constexpr std::uint32_t kMetadataTooLong = 12288;        // a variable length value too long

// Codes after which a frame's reading goes on.
inline constexpr std::uint32_t kMetadataSoftCodes =
    kMetadataNotUnderstood | kMetadataDeConfigUnseen | kMetadataDrcConfigUnseen;

inline bool metadata_is_fatal(std::uint32_t code) {
    return (code & ~kMetadataSoftCodes) != 0;
}

// The code for a reader's state, 0 while it is good.
std::uint32_t metadata_code(FieldError error);

inline std::uint32_t metadata_code(const FieldReader& in) {
    return metadata_code(in.error);
}

}  // namespace mediasplit
