#include "src/mp4demuxer/box_table.h"

#include <algorithm>
#include <array>

namespace mediasplit {

namespace {

// Type, handler, whether it shows in the tree, whether it wants a current track.
constexpr std::array<BoxRow, 92> kBoxTable{{
    {fourcc("ftyp"), parse_box_ftyp, true, false},
    {fourcc("styp"), parse_box_styp, false, false},
    {fourcc("mdat"), parse_box_skip, false, false},
    {fourcc("moov"), parse_box, true, false},
    {fourcc("mvhd"), parse_box_mvhd, false, false},
    {fourcc("trak"), parse_box_trak, true, false},
    {fourcc("tkhd"), parse_box_tkhd, true, true},
    {fourcc("edts"), parse_box_elst, false, true},
    {fourcc("stco"), parse_box_stco, false, true},
    {fourcc("co64"), parse_box_stco, false, true},
    {fourcc("stsz"), parse_box_stsz, false, true},
    {fourcc("stsd"), parse_box_stsd, true, false},
    {fourcc("stsc"), parse_box_stsc, false, true},
    {fourcc("stts"), parse_box_stts, false, true},
    {fourcc("stss"), parse_box_stss, false, true},
    {fourcc("ctts"), parse_box_ctts, false, true},
    {fourcc("mdhd"), parse_box_mdhd, true, true},
    {fourcc("stbl"), parse_box, true, false},
    {fourcc("sidx"), parse_box_sidx, true, false},
    {fourcc("vmhd"), parse_box_vmhd, false, true},
    {fourcc("smhd"), parse_box_smhd, false, true},
    {fourcc("encv"), parse_box_encv, true, true},
    {fourcc("enca"), parse_box_enca, true, true},
    {fourcc("sinf"), parse_box_sinf, true, false},
    {fourcc("schm"), parse_box_schm, true, true},
    {fourcc("schi"), parse_box, true, false},
    {fourcc("frma"), parse_box_frma, false, true},
    {fourcc("mp4a"), parse_box_audio, true, true},
    {fourcc("avc1"), parse_box_avc1, true, true},
    {fourcc("avc3"), parse_box_avc3, true, true},
    {fourcc("pxav"), parse_box_pxav, true, true},
    {fourcc("pxa1"), parse_box_pxa1, true, true},
    {fourcc("pavc"), parse_box_pavc, true, true},
    {fourcc("pxh8"), parse_box_pxh8, true, true},
    {fourcc("hvc1"), parse_box_hvc1, true, true},
    {fourcc("hev1"), parse_box_hev1, true, true},
    {fourcc("pxhe"), parse_box_pxhe, true, true},
    {fourcc("pxh1"), parse_box_pxh1, true, true},
    {fourcc("av01"), parse_box_av01, true, true},
    {fourcc("pav1"), parse_box_pav1, true, true},
    {fourcc("av1C"), parse_box_av1C, true, true},
    {fourcc("s263"), parse_box_s263, true, true},
    {fourcc("tx3g"), parse_box_tx3g, false, true},
    {fourcc("metx"), parse_box_metx, false, true},
    {fourcc("ac-3"), parse_box_ac3, true, true},
    {fourcc("ec-3"), parse_box_ec3, true, true},
    {fourcc("ac-4"), parse_box_ac4, true, true},
    {fourcc("mlpa"), parse_box_mlpa, false, true},
    {fourcc("wave"), parse_box_wave, true, false},
    {fourcc("esds"), parse_box_esds, true, true},
    {fourcc("d263"), parse_box_d263, true, true},
    {fourcc("avcC"), parse_box_avcC, true, true},
    {fourcc("avcE"), parse_box_avcE, true, true},
    {fourcc("hvcC"), parse_box_hvcC, true, true},
    {fourcc("lhvC"), parse_box_lhvC, true, true},
    {fourcc("hvcE"), parse_box_hvcE, true, true},
    {fourcc("pxcC"), parse_box_prsm_config, true, true},
    {fourcc("pxvC"), parse_box_prsm_config, true, true},
    {fourcc("pxwC"), parse_box_prsm_config, true, true},
    {fourcc("dac3"), parse_box_dac3, true, true},
    {fourcc("dec3"), parse_box_dec3, true, true},
    {fourcc("dmlp"), parse_box_dmlp, false, true},
    {fourcc("dac4"), parse_box_dac4, true, true},
    {fourcc("mdcv"), parse_box_mdcv, true, true},
    {fourcc("clli"), parse_box_clli, true, true},
    {fourcc("colr"), parse_box_colr, true, true},
    {fourcc("hdlr"), parse_box_hdlr, false, true},
    {fourcc("mdia"), parse_box, true, false},
    {fourcc("minf"), parse_box, true, false},
    {fourcc("dinf"), parse_box, false, false},
    {fourcc("dref"), parse_box_skip, false, false},
    {fourcc("udta"), parse_box, false, false},
    {fourcc("meta"), parse_box_skip, false, false},
    {fourcc("ilst"), parse_box_ilst, false, false},
    {fourcc("uuid"), parse_box_uuid, false, false},
    {fourcc("sgpd"), parse_box_sgpd, true, true},
    {fourcc("mvex"), parse_box, false, false},
    {fourcc("mehd"), parse_box_skip, false, false},
    {fourcc("moof"), parse_box_moof, true, false},
    {fourcc("traf"), parse_box_traf, true, false},
    {fourcc("trex"), parse_box_trex, false, false},
    {fourcc("tfhd"), parse_box_tfhd, false, false},
    {fourcc("trun"), parse_box_trun, false, true},
    {fourcc("mfhd"), parse_box_mfhd, false, false},
    {fourcc("tref"), parse_box, false, false},
    {fourcc("vdep"), parse_box_vdep, false, true},
    {fourcc("tfdt"), parse_box_tfdt, true, true},
    {fourcc("pssh"), parse_box_pssh, true, false},
    {fourcc("tenc"), parse_box_tenc, true, true},
    {fourcc("saiz"), parse_box_skip, false, false},
    {fourcc("saio"), parse_box_skip, false, false},
    {fourcc("senc"), parse_box_senc, true, true},
}};

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
