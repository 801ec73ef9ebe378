#include "oapinfolib/src/axdd.h"

namespace mediasplit {

namespace {

constexpr std::int64_t kTrailerBits = 32;  // auxdatal, auxdatae, encinfo and crc2

std::int64_t frame_bits(std::uint16_t frame_words) {
    return std::int64_t{frame_words} * 16;
}

}  // namespace

void axdd_init(AuxField& field) {
    field = AuxField{};
}

void axdd_unp(const std::uint16_t* frame, std::uint16_t frame_words, AuxField& field) {
    axdd_init(field);
    if (frame_bits(frame_words) < kTrailerBits) {
        return;
    }
    BsodReader reader;
    bsod_init(frame, frame_words, frame_bits(frame_words), reader);
    bsod_rewind(reader, 18);
    field.auxdatae = bsod_unprj(reader, 1);
    if (field.auxdatae == 0) {
        return;
    }
    bsod_rewind(reader, 15);
    field.auxdatal = bsod_unprj(reader, 14);
    field.fits = kTrailerBits + field.auxdatal <= frame_bits(frame_words);
    if (field.fits) {
        axdd_seek(frame, frame_words, field);
    }
}

void axdd_seek(const std::uint16_t* frame, std::uint16_t frame_words, AuxField& field) {
    bsod_init(frame, frame_words, frame_bits(frame_words) - kTrailerBits - field.auxdatal,
              field.data);
}

}  // namespace mediasplit
