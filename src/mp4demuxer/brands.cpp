// Brands of a file and of its segments (ISO/IEC 14496-12 4.3, 8.16.2).
#include <algorithm>
#include <array>

#include "src/mp4demuxer/box_reader.h"
#include "src/mp4demuxer/handlers.h"
#include "src/mp4demuxer/mp4demuxer.h"

namespace mediasplit {

namespace {

constexpr std::array kCmafBrands = {fourcc("cmf2"), fourcc("cmfc"), fourcc("cmfs"), fourcc("cmff"),
                                    fourcc("cmfl")};

bool is_cmaf_brand(std::uint32_t brand) {
    return std::find(kCmafBrands.begin(), kCmafBrands.end(), brand) != kCmafBrands.end();
}

bool is_listed(const BrandRecord& record, std::uint32_t brand) {
    return record.listed.contains(brand);
}

void read_major_brand(PayloadReader& in, BrandRecord& record) {
    record.major_brand = in.u32();
    record.minor_version = in.u32();
}

// The whole compatible brands that the box holds.
std::vector<std::uint32_t> read_compatible_brands(PayloadReader& in) {
    std::vector<std::uint8_t> bytes = in.rest(in.left() / 4 * 4);
    std::vector<std::uint32_t> brands;
    brands.reserve(bytes.size() / 4);
    for (std::size_t at = 0; at + 4 <= bytes.size(); at += 4) {
        brands.push_back(load_u32(bytes, at));
    }
    return brands;
}

void set_brands(BrandRecord& record, std::vector<std::uint32_t> brands) {
    record.compat_brands = std::move(brands);
    record.num_compat_brands = static_cast<std::uint32_t>(record.compat_brands.size());
    record.listed.insert(record.compat_brands.begin(), record.compat_brands.end());
}

}  // namespace

HandlerResult parse_box_ftyp(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    if (demuxer.ftyp != nullptr) {
        return kRefused;
    }
    PayloadReader in(file, node.size);
    demuxer.ftyp = std::make_unique<BrandRecord>();
    read_major_brand(in, *demuxer.ftyp);
    set_brands(*demuxer.ftyp, read_compatible_brands(in));
    return kHandled;
}

HandlerResult parse_box_styp(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    if (demuxer.styp == nullptr) {
        demuxer.styp = std::make_unique<BrandRecord>();
        if (demuxer.ftyp != nullptr) {
            set_brands(*demuxer.styp, demuxer.ftyp->compat_brands);
        }
    }
    BrandRecord& record = *demuxer.styp;
    PayloadReader in(file, node.size);
    read_major_brand(in, record);
    for (const std::uint32_t brand : read_compatible_brands(in)) {
        if (record.listed.insert(brand).second) {
            record.compat_brands.push_back(brand);
        }
    }
    record.num_compat_brands = static_cast<std::uint32_t>(record.compat_brands.size());
    return kHandled;
}

bool compat_brand_included(const Mp4Demuxer& demuxer, std::uint32_t brand) {
    return demuxer.ftyp != nullptr && is_listed(*demuxer.ftyp, brand);
}

bool contain_cmaf_brand(const Mp4Demuxer& demuxer) {
    const BrandRecord* record = demuxer.styp != nullptr ? demuxer.styp.get() : demuxer.ftyp.get();
    return record != nullptr &&
           (is_cmaf_brand(record->major_brand) ||
            std::any_of(kCmafBrands.begin(), kCmafBrands.end(),
                        [record](std::uint32_t brand) { return is_listed(*record, brand); }));
}

}  // namespace mediasplit
