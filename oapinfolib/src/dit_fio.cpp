#include "oapinfolib/src/dit_fio.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "oapinfolib/src/fatal.h"

namespace mediasplit {

namespace {

constexpr FatalSite kSiteStrayByte{kSourceDitFio, 85};
constexpr FatalSite kSiteBadSync{kSourceDitFio, 121};
constexpr FatalSite kSiteShortRead{kSourceDitFio, 168};

int refuse_read(FatalSite site) {
    return refuse(kFioReadError, "Cannot read from input file", site);
}

void enter_byte_order(std::int16_t order, FileBuffer& file) {
    if (file.byte_order != kOrderUnknown && file.byte_order != order) {
        print_warning("FIO: Byte order status changed");
    }
    file.byte_order = order;
}

bool is_swap_needed(const FileBuffer& file) {
    const bool is_file_order = file.byte_order != kOrderWords;
    return is_file_order == (std::endian::native == std::endian::little);
}

}  // namespace

void openfilebufs(std::uint32_t size, FileBuffer& file) {
    std::fill_n(file.words.begin(), file.words_used, std::uint16_t{0});
    file.words_used = 0;
    file.eof = false;
    file.byte_order = kOrderUnknown;
    file.frames_done = 0;
    file.bytes_done = 0;
    file.bytes_left = size;
}

int closefilebufs() {
    return 0;
}

void initbufdescriptors(const FileBuffer& file, FrameDescriptor& descriptor) {
    descriptor = {file.words.data(), static_cast<std::uint16_t>(kFrameBufferWords), 0};
}

int detectbyteorder(const std::uint8_t* next, FileBuffer& file) {
    if (file.bytes_left <= 0) {
        file.eof = true;
        return 0;
    }
    if (file.bytes_left == 1) {
        return refuse_read(kSiteStrayByte);
    }
    if (next[0] == 0x0B && next[1] == 0x77) {
        enter_byte_order(kOrderFile, file);
        return 0;
    }
    if (next[0] == 0x77 && next[1] == 0x0B) {
        enter_byte_order(kOrderWords, file);
        return 0;
    }
    return refuse(kFioBadSync, "Invalid syncword detected while detecting byte order",
                  kSiteBadSync);
}

int readfilein(std::int64_t count, std::size_t offset, const std::uint8_t* source,
               FileBuffer& file) {
    const std::int64_t room =
        static_cast<std::int64_t>(kFrameBufferWords - std::min(offset, kFrameBufferWords));
    count = std::clamp<std::int64_t>(count, 0, room);
    if (file.bytes_left >= 2 * count) {
        if (count == 0) {
            return 0;
        }
        const auto words = static_cast<std::size_t>(count);
        std::uint16_t* target = file.words.data() + offset;
        std::memcpy(target, source, words * 2);
        if (is_swap_needed(file)) {
            performbyterev(words, target);
        }
        file.bytes_left -= 2 * count;
        file.words_used = std::max(file.words_used, offset + words);
        return 0;
    }
    if (file.bytes_left != 0) {
        return refuse_read(kSiteShortRead);
    }
    file.eof = true;
    return 0;
}

void performbyterev(std::size_t count, std::uint16_t* words) {
    for (std::size_t i = 0; i < count; ++i) {
        words[i] = static_cast<std::uint16_t>(words[i] << 8 | words[i] >> 8);
    }
}

}  // namespace mediasplit
