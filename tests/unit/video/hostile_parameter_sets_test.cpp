// Damaged parameter sets: every parser ends, keeps its capacities and reads nothing but its unit.
#include <gtest/gtest.h>

#include <random>

#include "src/video/enhancement_metadata.h"
#include "src/video/parameter_sets.h"
#include "tests/support/nal_builder.h"

namespace mediasplit {
namespace {

using testing::BitWriter;

template <typename Layers>
void expect_hrd_capacities(const Layers& layers) {
    EXPECT_LE(layers.size(), kMaxHevcSubLayers);
    for (const HevcHrdLayer& layer : layers) {
        EXPECT_LE(layer.nal_cpb.size(), kMaxHevcCpbEntries);
        EXPECT_LE(layer.vcl_cpb.size(), kMaxHevcCpbEntries);
    }
}

void expect_set_capacities(const std::vector<HevcShortTermRefPicSet>& sets) {
    EXPECT_LE(sets.size(), kMaxHevcShortTermSets);
    for (const HevcShortTermRefPicSet& set : sets) {
        EXPECT_LE(set.num_negative_pics, kMaxHevcShortTermPics);
        EXPECT_LE(set.num_positive_pics, kMaxHevcShortTermPics);
    }
}

// Takes its own copy of exactly the unit's size, so that a read behind it is found.
void parse_as_everything(const std::vector<std::uint8_t>& bytes) {
    const std::vector<std::uint8_t> unit(bytes.begin(), bytes.end());
    const NalBuffer nal{unit.data(), static_cast<std::uint32_t>(unit.size())};
    AvcSps avc;
    parse_avc_sps_nal(&nal, &avc, nullptr);
    EXPECT_LE(avc.offset_for_ref_frame.size(), kMaxAvcPicOrderCntOffsets);
    EXPECT_LE(avc.scaling_lists.size(), kMaxAvcScalingLists);
    EXPECT_LE(avc.vui.nal_hrd.cpb.size(), kMaxAvcCpbEntries);
    EXPECT_LE(avc.vui.vcl_hrd.cpb.size(), kMaxAvcCpbEntries);
    HevcVps vps;
    parse_hevc_vps_nal(&nal, &vps, nullptr);
    EXPECT_LE(vps.hrds.size(), kMaxHevcHrds);
    for (const HevcVpsHrd& hrd : vps.hrds) {
        expect_hrd_capacities(hrd.hrd.layers);
    }
    HevcSps sps;
    parse_hevc_sps_nal(&nal, &sps, nullptr);
    expect_set_capacities(sps.st_ref_pic_sets);
    expect_hrd_capacities(sps.vui.hrd.layers);
    EXPECT_LE(sps.lt_ref_pic_poc_lsb_sps.size(), kMaxHevcLongTermPics);
    EXPECT_LE(sps.used_by_curr_pic_lt_sps_flag.size(), kMaxHevcLongTermPics);
    EXPECT_LE(sps.scaling_list.matrices.size(), 20U);
    HevcPps pps;
    parse_hevc_pps_nal(&nal, &pps, nullptr);
    EXPECT_LE(pps.column_width_minus1.size(), kMaxHevcTileColumns);
    EXPECT_LE(pps.row_height_minus1.size(), kMaxHevcTileRows);
    RpuNal rpu;
    rpu.data = nal.data;
    rpu.size = nal.size;
    parse_rpu_nal(&rpu, nullptr);
    EXPECT_LE(rpu.size, kNalWorkAreaSize);
}

// A sequence parameter set that uses every part.
std::vector<std::uint8_t> rich_hevc_sps() {
    BitWriter out;
    out.u(0, 1).u(33, 6).u(0, 6).u(1, 3).u(0, 4).u(0, 3).flag(true);
    testing::write_hevc_profile(out, {});
    out.u(93, 8).ue(0).ue(1).ue(416).ue(240).flag(true).ue(0).ue(1).ue(0).ue(1).ue(0).ue(0);
    out.ue(4).flag(true).ue(4).ue(2).ue(0).ue(0).ue(3).ue(0).ue(3).ue(1).ue(1);
    out.flag(true).flag(true);
    for (int i = 0; i < 20; ++i) {
        out.flag(false).ue(0);
    }
    out.flag(true).flag(true).flag(true).u(7, 4).u(7, 4).ue(0).ue(1).flag(false);
    out.ue(3).ue(2).ue(1).ue(0).flag(true).ue(2).flag(false).ue(3).flag(true);
    out.flag(true).flag(true).ue(1).flag(true).flag(true).flag(true).flag(true);
    out.flag(false).ue(1).ue(0).ue(0).flag(true);
    out.flag(true).ue(2).u(3, 8).flag(true).u(4, 8).flag(false);
    out.flag(true).flag(true).flag(true);
    out.flag(true).u(255, 8).u(4, 16).u(3, 16).flag(false);
    out.flag(true).u(5, 3).flag(false).flag(true).u(9, 8).u(16, 8).u(9, 8);
    out.flag(true).ue(1).ue(1).u(0, 3).flag(true).ue(0).ue(0).ue(0).ue(0);
    out.flag(true).u(1001, 32).u(60000, 32).flag(true).ue(0).flag(true);
    out.flag(true).flag(true).flag(true).u(98, 8).u(4, 5).flag(true).u(6, 5);
    out.u(1, 4).u(2, 4).u(3, 4).u(10, 5).u(11, 5).u(12, 5).flag(true).ue(0).ue(1);
    for (int i = 0; i < 4; ++i) {
        out.ue(20).ue(21).ue(22).ue(23).flag(true);
    }
    out.flag(true).u(7, 3).ue(0).ue(2).ue(1).ue(15).ue(15).flag(true).u(0, 8);
    return testing::escape_nal(out.trailing().bytes());
}

std::vector<std::vector<std::uint8_t>> samples() {
    testing::AvcSpsOptions avc;
    avc.profile_idc = 100;
    avc.crop = testing::CropOffsets{0, 0, 0, 4};
    avc.timing = testing::Fraction{1001, 60000};
    avc.aspect_ratio_idc = 255;
    testing::HevcVpsOptions vps;
    vps.timing = testing::Fraction{1, 25};
    return {testing::build_avc_sps(avc), testing::build_hevc_vps(vps), rich_hevc_sps(),
            testing::build_hevc_pps()};
}

TEST(HostileParameterSets, CutAtEveryBit) {
    for (const std::vector<std::uint8_t>& unit : samples()) {
        for (std::size_t bits = 1; bits <= unit.size() * 8; ++bits) {
            std::vector<std::uint8_t> cut(
                unit.begin(), unit.begin() + static_cast<std::ptrdiff_t>((bits + 7) / 8));
            cut.back() = static_cast<std::uint8_t>(cut.back() & (0xFF00U >> ((bits - 1) % 8 + 1)));
            parse_as_everything(cut);
        }
    }
}

TEST(HostileParameterSets, EveryBitFlipped) {
    for (std::vector<std::uint8_t> unit : samples()) {
        for (std::size_t bit = 0; bit < unit.size() * 8; ++bit) {
            unit[bit / 8] = static_cast<std::uint8_t>(unit[bit / 8] ^ (0x80U >> (bit % 8)));
            parse_as_everything(unit);
            unit[bit / 8] = static_cast<std::uint8_t>(unit[bit / 8] ^ (0x80U >> (bit % 8)));
        }
    }
}

TEST(HostileParameterSets, ExtremeCodesAtEveryBit) {
    for (const std::vector<std::uint8_t>& unit : samples()) {
        for (std::size_t bit = 0; bit < unit.size() * 8; ++bit) {
            for (const unsigned zeros : {20U, 31U, 32U, 40U, 200U}) {
                for (const bool ones : {false, true}) {
                    BitWriter out;
                    for (std::size_t i = 0; i < bit; ++i) {
                        out.u(unit[i / 8] >> (7 - i % 8), 1);
                    }
                    out.u(0, zeros).flag(true);
                    for (unsigned i = 0; i < 400; ++i) {
                        out.u(ones ? 0xFF : 0x5A, 8);
                    }
                    parse_as_everything(out.bytes());
                }
            }
        }
    }
}

TEST(HostileParameterSets, RandomBits) {
    std::mt19937 random(20);
    std::uniform_int_distribution<int> byte(0, 255);
    std::uniform_int_distribution<std::size_t> size(0, 700);
    std::uniform_int_distribution<int> sparse(0, 3);
    for (int round = 0; round < 20000; ++round) {
        std::vector<std::uint8_t> unit(size(random));
        const bool mostly_zero = round % 3 == 0;
        for (std::uint8_t& value : unit) {
            value =
                static_cast<std::uint8_t>(mostly_zero && sparse(random) != 0 ? 0 : byte(random));
        }
        if (unit.size() > 2 && round % 2 == 0) {
            unit[1] = 100;  // a profile with all elements
        }
        parse_as_everything(unit);
    }
}

TEST(HostileParameterSets, SizesAroundTheWorkArea) {
    for (const std::size_t size : {1U, 2U, 3U, 511U, 512U, 513U, 65535U}) {
        for (const int fill : {0x00, 0x03, 0x55, 0xFF}) {
            parse_as_everything(std::vector<std::uint8_t>(size, static_cast<std::uint8_t>(fill)));
        }
    }
}

}  // namespace
}  // namespace mediasplit
