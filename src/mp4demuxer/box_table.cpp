#include "src/mp4demuxer/box_table.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace mediasplit {

namespace {

constexpr std::array<BoxRow, 92> kBoxTable{{
    {fourcc("ftyp"), parse_box_ftyp, true},
    {fourcc("styp"), parse_box_styp, false},
    {fourcc("mdat"), parse_box_skip, false},
    {fourcc("moov"), parse_box, true},
    {fourcc("mvhd"), parse_box_mvhd, false},
    {fourcc("trak"), parse_box_trak, true},
    {fourcc("tkhd"), parse_box_tkhd, true},
    {fourcc("edts"), parse_box_elst, false},
    {fourcc("stco"), parse_box_stco, false},
    {fourcc("co64"), parse_box_stco, false},
    {fourcc("stsz"), parse_box_stsz, false},
    {fourcc("stsd"), parse_box_stsd, true},
    {fourcc("stsc"), parse_box_stsc, false},
    {fourcc("stts"), parse_box_stts, false},
    {fourcc("stss"), parse_box_stss, false},
    {fourcc("ctts"), parse_box_ctts, false},
    {fourcc("mdhd"), parse_box_mdhd, true},
    {fourcc("stbl"), parse_box, true},
    {fourcc("sidx"), parse_box_sidx, true},
    {fourcc("vmhd"), parse_box_vmhd, false},
    {fourcc("smhd"), parse_box_smhd, false},
    {fourcc("encv"), parse_box_encv, true},
    {fourcc("enca"), parse_box_enca, true},
    {fourcc("sinf"), parse_box_sinf, true},
    {fourcc("schm"), parse_box_schm, true},
    {fourcc("schi"), parse_box, true},
    {fourcc("frma"), parse_box_frma, false},
    {fourcc("mp4a"), parse_box_audio, true},
    {fourcc("avc1"), parse_box_avc1, true},
    {fourcc("avc3"), parse_box_avc3, true},
    {fourcc("pxav"), parse_box_pxav, true},
    {fourcc("pxa1"), parse_box_pxa1, true},
    {fourcc("pavc"), parse_box_pavc, true},
    {fourcc("pxh8"), parse_box_pxh8, true},
    {fourcc("hvc1"), parse_box_hvc1, true},
    {fourcc("hev1"), parse_box_hev1, true},
    {fourcc("pxhe"), parse_box_pxhe, true},
    {fourcc("pxh1"), parse_box_pxh1, true},
    {fourcc("av01"), parse_box_av01, true},
    {fourcc("pav1"), parse_box_pav1, true},
    {fourcc("av1C"), parse_box_av1C, true},
    {fourcc("s263"), parse_box_s263, true},
    {fourcc("tx3g"), parse_box_tx3g, false},
    {fourcc("metx"), parse_box_metx, false},
    {fourcc("ac-3"), parse_box_ac3, true},
    {fourcc("ec-3"), parse_box_ec3, true},
    {fourcc("ac-4"), parse_box_ac4, true},
    {fourcc("mlpa"), parse_box_mlpa, false},
    {fourcc("wave"), parse_box_wave, true},
    {fourcc("esds"), parse_box_esds, true},
    {fourcc("d263"), parse_box_d263, true},
    {fourcc("avcC"), parse_box_avcC, true},
    {fourcc("avcE"), parse_box_avcE, true},
    {fourcc("hvcC"), parse_box_hvcC, true},
    {fourcc("lhvC"), parse_box_lhvC, true},
    {fourcc("hvcE"), parse_box_hvcE, true},
    {fourcc("pxcC"), parse_box_prsm_config, true},
    {fourcc("pxvC"), parse_box_prsm_config, true},
    {fourcc("pxwC"), parse_box_prsm_config, true},
    {fourcc("dac3"), parse_box_dac3, true},
    {fourcc("dec3"), parse_box_dec3, true},
    {fourcc("dmlp"), parse_box_dmlp, false},
    {fourcc("dac4"), parse_box_dac4, true},
    {fourcc("mdcv"), parse_box_mdcv, true},
    {fourcc("clli"), parse_box_clli, true},
    {fourcc("colr"), parse_box_colr, true},
    {fourcc("hdlr"), parse_box_hdlr, false},
    {fourcc("mdia"), parse_box, true},
    {fourcc("minf"), parse_box, true},
    {fourcc("dinf"), parse_box, false},
    {fourcc("dref"), parse_box_skip, false},
    {fourcc("udta"), parse_box, false},
    {fourcc("meta"), parse_box_skip, false},
    {fourcc("ilst"), parse_box_ilst, false},
    {fourcc("uuid"), parse_box_uuid, false},
    {fourcc("sgpd"), parse_box_sgpd, true},
    {fourcc("mvex"), parse_box, false},
    {fourcc("mehd"), parse_box_skip, false},
    {fourcc("moof"), parse_box_moof, true},
    {fourcc("traf"), parse_box_traf, true},
    {fourcc("trex"), parse_box_trex, false},
    {fourcc("tfhd"), parse_box_tfhd, false},
    {fourcc("trun"), parse_box_trun, false},
    {fourcc("mfhd"), parse_box_mfhd, false},
    {fourcc("tref"), parse_box, false},
    {fourcc("vdep"), parse_box_vdep, false},
    {fourcc("tfdt"), parse_box_tfdt, true},
    {fourcc("pssh"), parse_box_pssh, true},
    {fourcc("tenc"), parse_box_tenc, true},
    {fourcc("saiz"), parse_box_skip, false},
    {fourcc("saio"), parse_box_skip, false},
    {fourcc("senc"), parse_box_senc, true},
}};

// The order of the search.
constexpr std::string_view kOrder =
    "ftypstypmdatmoovmvhdtraktkhdedtsstcoco64stszstsdstscsttsstsscttsmdhdstblsidxvmhd"
    "smhdencvencasinfschmschifrmamp4aavc1avc3pxavpxa1pavcpxh8hvc1hev1pxhepxh1av01pav1"
    "av1Cs263tx3gmetxac-3ec-3ac-4mlpawaveesdsd263avcCavcEhvcClhvChvcEpxcCpxvCpxwCdac3"
    "dec3dmlpdac4mdcvcllicolrhdlrmdiaminfdinfdrefudtametailstuuidsgpdmvexmehdmooftraf"
    "trextfhdtrunmfhdtrefvdeptfdtpsshtencsaizsaiosenc";

constexpr bool is_in_order() {
    if (kOrder.size() != 4 * kBoxTable.size()) {
        return false;
    }
    for (std::size_t i = 0; i < kOrder.size(); ++i) {
        const auto byte = static_cast<unsigned char>(kBoxTable[i / 4].type >> (24 - 8 * (i % 4)));
        if (byte != static_cast<unsigned char>(kOrder[i])) {
            return false;
        }
    }
    return true;
}

constexpr bool is_unique() {
    for (std::size_t i = 0; i < kBoxTable.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (kBoxTable[i].type == kBoxTable[j].type) {
                return false;
            }
        }
    }
    return true;
}

static_assert(is_in_order(), "a row of the box table is missing or out of place");
static_assert(is_unique(), "a box type stands twice in the box table");

}  // namespace

std::span<const BoxRow> box_table() {
    return kBoxTable;
}

const BoxRow* find_box_row(std::uint32_t type) {
    const auto row =
        std::find_if(kBoxTable.begin(), kBoxTable.end(),
                     [type](const BoxRow& candidate) { return candidate.type == type; });
    return row == kBoxTable.end() ? nullptr : &*row;
}

}  // namespace mediasplit
