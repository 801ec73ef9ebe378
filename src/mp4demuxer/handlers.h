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

using BoxHandler = HandlerResult(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree);

// Containers (box_walker).
BoxHandler parse_box;
BoxHandler parse_box_skip;
BoxHandler parse_box_moof;
BoxHandler parse_box_traf;
BoxHandler parse_box_trak;

// Headers (header_boxes).
BoxHandler parse_box_mvhd;
BoxHandler parse_box_tkhd;
BoxHandler parse_box_mdhd;
BoxHandler parse_box_elst;
BoxHandler parse_box_vmhd;
BoxHandler parse_box_smhd;
BoxHandler parse_box_hdlr;
BoxHandler parse_box_sidx;
BoxHandler parse_box_vdep;
BoxHandler parse_box_uuid;
BoxHandler parse_box_ilst;

// Sample tables (sample_tables).
BoxHandler parse_box_stts;
BoxHandler parse_box_ctts;
BoxHandler parse_box_stss;
BoxHandler parse_box_stsc;
BoxHandler parse_box_stco;
BoxHandler parse_box_stsz;

// Fragments (fragments).
BoxHandler parse_box_trex;
BoxHandler parse_box_mfhd;
BoxHandler parse_box_tfhd;
BoxHandler parse_box_tfdt;
BoxHandler parse_box_trun;

// Sample entries (sample_entries).
BoxHandler parse_box_stsd;
BoxHandler parse_box_audio;
BoxHandler parse_box_enca;
BoxHandler parse_box_ac3;
BoxHandler parse_box_ec3;
BoxHandler parse_box_ac4;
BoxHandler parse_box_mlpa;
BoxHandler parse_box_wave;
BoxHandler parse_box_video;
BoxHandler parse_box_encv;
BoxHandler parse_box_s263;
BoxHandler parse_box_avc1;
BoxHandler parse_box_avc3;
BoxHandler parse_box_hvc1;
BoxHandler parse_box_hev1;
BoxHandler parse_box_av01;
BoxHandler parse_box_pxav;
BoxHandler parse_box_pxa1;
BoxHandler parse_box_pavc;
BoxHandler parse_box_pxhe;
BoxHandler parse_box_pxh1;
BoxHandler parse_box_pxh8;
BoxHandler parse_box_pav1;
BoxHandler parse_box_tx3g;
BoxHandler parse_box_metx;

// Video configuration (video_configs) and what else a video entry holds.
BoxHandler parse_box_avcC;
BoxHandler parse_box_avcE;
BoxHandler parse_box_hvcC;
BoxHandler parse_box_lhvC;
BoxHandler parse_box_hvcE;
BoxHandler parse_box_av1C;
BoxHandler parse_box_prsm_config;
BoxHandler parse_box_d263;
BoxHandler parse_box_mdcv;
BoxHandler parse_box_clli;
BoxHandler parse_box_colr;

// Audio configuration (audio_configs).
BoxHandler parse_box_esds;
BoxHandler parse_box_dac3;
BoxHandler parse_box_dec3;
BoxHandler parse_box_dmlp;
BoxHandler parse_box_dac4;

// Protection (protection_boxes).
BoxHandler parse_box_sinf;
BoxHandler parse_box_frma;
BoxHandler parse_box_schm;
BoxHandler parse_box_tenc;
BoxHandler parse_box_pssh;
BoxHandler parse_box_sgpd;
BoxHandler parse_box_senc;

// Brands (brands).
BoxHandler parse_box_ftyp;
BoxHandler parse_box_styp;

}  // namespace mediasplit
