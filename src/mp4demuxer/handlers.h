// The handlers of the box table. All have one form: they are entered with the read position at the
// payload and may read as much or as little of it as they like, since the walker puts the position
// right behind them. A refusal is silent, and the walk goes on. The table tells which handlers may
// rely on a current track.
#pragma once

#include <cstdint>

#include "src/commonfileio/input_file.h"
#include "src/mp4demuxer/records.h"

namespace mediasplit {

// What a handler returns: 0, or anything else for a refusal.
using HandlerResult = std::uint32_t;
inline constexpr HandlerResult kHandled = 0;
inline constexpr HandlerResult kRefused = 1;

using BoxHandler = HandlerResult (*)(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node,
                                     Ezxml* tree);

// Containers (box_walker).
HandlerResult parse_box(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_skip(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_moof(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_traf(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_trak(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);

// Headers (header_boxes).
HandlerResult parse_box_mvhd(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_tkhd(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_mdhd(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_elst(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_vmhd(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_smhd(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_hdlr(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_sidx(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_vdep(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_uuid(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_ilst(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);

// Sample tables (sample_tables).
HandlerResult parse_box_stts(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_ctts(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_stss(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_stsc(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_stco(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_stsz(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);

// Fragments (fragments).
HandlerResult parse_box_trex(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_mfhd(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_tfhd(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_tfdt(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_trun(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);

// Sample entries (sample_entries).
HandlerResult parse_box_stsd(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_audio(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_enca(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_ac3(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_ec3(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_ac4(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_mlpa(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_wave(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_video(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_encv(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_s263(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_avc1(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_avc3(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_hvc1(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_hev1(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_av01(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_pxav(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_pxa1(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_pavc(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_pxhe(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_pxh1(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_pxh8(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_pav1(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_tx3g(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_metx(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);

// Video configuration (video_configs) and what else a video entry holds.
HandlerResult parse_box_avcC(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_avcE(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_hvcC(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_lhvC(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_hvcE(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_av1C(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_prsm_config(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node,
                                    Ezxml* tree);
HandlerResult parse_box_d263(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_mdcv(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_clli(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_colr(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);

// Audio configuration (audio_configs).
HandlerResult parse_box_esds(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_dac3(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_dec3(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_dmlp(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_dac4(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);

// Protection (protection_boxes).
HandlerResult parse_box_sinf(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_frma(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_schm(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_tenc(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_pssh(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_sgpd(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_senc(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);

// Brands (brands).
HandlerResult parse_box_ftyp(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);
HandlerResult parse_box_styp(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);

}  // namespace mediasplit
