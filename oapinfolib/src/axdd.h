#pragma once

#include <cstdint>

#include "oapinfolib/src/bsod.h"

// Auxiliary data field at the end of a frame (ETSI TS 102 366 4.4.4): read backwards from the end,
// auxbits, auxdatal (14), auxdatae (1), crcrsv or encinfo (1), crc2 (16).

namespace mediasplit {

struct AuxField {
    std::uint16_t auxdatae = 0;
    std::uint16_t auxdatal = 0;  // bits
    bool fits = false;           // auxdatal stays inside the frame
    BsodReader data{};           // stands at the first bit of the auxiliary data
};

// Clears the record.
void axdd_init(AuxField& field);

// Reads the field of the frame of `frame_words` words at `frame`. Without auxdatae, and for a
// length that the frame can't hold, `data` stays unset.
void axdd_unp(const std::uint16_t* frame, std::uint16_t frame_words, AuxField& field);

// Places `data` of an already read record again, 32 + auxdatal bits before the frame's end.
void axdd_seek(const std::uint16_t* frame, std::uint16_t frame_words, AuxField& field);

}  // namespace mediasplit
