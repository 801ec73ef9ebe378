#include "tests/support/packed_builder.h"

#include <string_view>

namespace mediasplit {

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

Bytes repeated(const Bytes& part, std::size_t count) {
    Bytes all;
    for (std::size_t i = 0; i < count; ++i) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

Bytes id3_tag_of(const Bytes& content, std::optional<std::uint32_t> size) {
    const auto told = size.value_or(static_cast<std::uint32_t>(content.size()));
    Bytes tag = {'I', 'D', '3', 4, 0, 0};
    for (const unsigned shift : {21U, 14U, 7U, 0U}) {
        tag.push_back(static_cast<std::uint8_t>(told >> shift & 0x7F));
    }
    return joined({tag, content});
}

Bytes time_stamp_frame(std::uint64_t time_stamp) {
    constexpr std::string_view kOwner{"com.apple.streaming.transportStreamTimestamp\0", 45};
    Bytes value;
    for (int shift = 56; shift >= 0; shift -= 8) {
        value.push_back(static_cast<std::uint8_t>(time_stamp >> shift));
    }
    return joined({{'P', 'R', 'I', 'V', 0, 0, 0, 53, 0, 0}, {kOwner.begin(), kOwner.end()}, value});
}

Bytes id3_tag(std::uint64_t time_stamp, std::size_t extra) {
    return id3_tag_of(joined({time_stamp_frame(time_stamp), Bytes(extra, 0)}));
}

}  // namespace mediasplit
