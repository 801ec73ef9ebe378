#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mediasplit {

// Writes AC-4 metadata from descriptions, so that a test states the bits and the fields it expects.
// It follows the syntax tables of ETSI TS 103 190-1 and -2 on its own, with no code of the readers.

// A row of bits, kept as text.
class MetadataBits {
public:
    MetadataBits& put(std::uint64_t value, int n);
    MetadataBits& flag(bool on) { return put(on ? 1 : 0, 1); }
    MetadataBits& code(std::string_view bits);
    MetadataBits& add(const MetadataBits& other) { return code(other.text_); }
    MetadataBits& bytes(const std::vector<std::uint8_t>& values);
    // variable_bits(n).
    MetadataBits& variable(std::uint64_t value, int n);
    // n bits, all ones standing for "and more", which variable_bits(more) adds.
    MetadataBits& escaped(std::uint64_t value, int n, int more);
    // A flag, and the value in n bits if there is one.
    MetadataBits& optional(const std::optional<std::uint32_t>& value, int n);
    // A size of n bits, a flag, and what is above them in variable_bits(more).
    MetadataBits& size_field(std::uint64_t value, int n, int more);
    MetadataBits& align();

    std::size_t size() const { return text_.size(); }
    const std::string& text() const { return text_; }
    MetadataBits first(std::size_t count) const;
    std::vector<std::uint8_t> to_bytes() const;

private:
    std::string text_;
};

using OptionalCode = std::optional<std::uint32_t>;

struct LoudnessText {
    std::uint32_t version = 0;
    std::uint32_t practice = 0;
    OptionalCode dialgate_practice{};  // in the short form: only whether it is there
    bool loudcorr_type = false;
    OptionalCode relgat{};
    OptionalCode spchgat{};
    std::uint32_t speech_practice = 0;
    OptionalCode strm3s{};
    OptionalCode max_strm3s{};
    OptionalCode truepk{};
    OptionalCode max_truepk{};
    OptionalCode boundary_zeros{};
    bool boundary_end = false;
    OptionalCode boundary_offset{};
    OptionalCode lra{};
    std::uint32_t lra_practice = 0;
    OptionalCode mntry{};
    OptionalCode max_mntry{};
    OptionalCode rtll_comp{};
    std::optional<std::string> extension{};
};
MetadataBits write_loudness(const LoudnessText& text, int sus_ver, bool presentation);

struct StereoDownmixText {
    std::uint32_t loro_centre = 0;
    std::uint32_t loro_surround = 0;
    OptionalCode loro_correction{};
    std::optional<std::pair<std::uint32_t, std::uint32_t>> ltrt{};
    OptionalCode ltrt_correction{};
    OptionalCode lfe{};
    std::uint32_t preferred = 0;
};
MetadataBits write_stereo_downmix(const std::optional<StereoDownmixText>& text, bool corrections,
                                  bool lfe);

struct BasicText {
    std::uint32_t dialnorm = 0;
    bool more = false;
    std::optional<LoudnessText> loudness{};
    OptionalCode substream_loudness{};
    OptionalCode dmixtyp_2ch{};
    std::uint32_t phase90_2ch = 0;
    std::optional<StereoDownmixText> downmix{};
    OptionalCode dmixtyp_5ch{};
    OptionalCode upmixtyp_5ch{};
    OptionalCode upmixtyp_7ch{};
    std::uint32_t phase90_mc = 0;
    bool surround_known = false;
    bool lfe_known = false;
    OptionalCode dc_block{};
};
MetadataBits write_basic(const BasicText& text, int sus_ver, int ch_mode);

struct ExtendedText {
    bool associated = false;  // sus_ver 0
    OptionalCode scale_main{};
    OptionalCode scale_main_centre{};
    OptionalCode scale_main_front{};
    std::uint32_t pan_associated = 0;
    bool dialog = false;
    OptionalCode dialog_max_gain{};
    std::vector<std::uint32_t> pan_dialog{};  // none, 1 for mono, 2 otherwise
    std::uint32_t pan_selector = 0;
    bool classifier = false;
    std::uint32_t active = 0;      // bit i: i-th of C, L, R, Ls, Rs, Lb, Rb, Lw, Rw, Tfl, Tfr, LFE
    std::uint32_t has_dialog = 0;  // the same for C, L, R
    OptionalCode event_probability{};
};
MetadataBits write_extended(const ExtendedText& text, int sus_ver, int ch_mode);

struct DrcSideText {
    std::uint32_t gain = 0;
    std::uint32_t level = 0;
    std::optional<std::pair<std::uint32_t, std::uint32_t>> section{};
};

struct DrcCurveText {
    std::uint32_t null_low = 0;
    std::uint32_t null_high = 0;
    DrcSideText boost{};
    DrcSideText cut{};
    std::optional<std::vector<std::uint32_t>> time_constants{};  // four
    std::optional<std::pair<std::uint32_t, std::uint32_t>> smoothing{};
};

struct DrcModeText {
    std::uint32_t id = 0;
    std::uint32_t level_from = 0;
    std::uint32_t level_to = 0;
    OptionalCode repeat_id{};
    bool default_profile = false;
    std::optional<DrcCurveText> curve{};
    std::uint32_t gains_config = 0;
};

struct DrcGainSetText {
    std::uint32_t version = 0;
    std::uint32_t first_gain = 64;
    std::string codes{};  // of the other gains
    std::string rest{};   // drc2_bits
    OptionalCode size{};  // in place of the true one
};

struct DrcText {
    std::vector<DrcModeText> modes{};  // written only if there are any
    std::uint32_t eac3_profile = 0;
    std::vector<DrcGainSetText> gain_sets{};
    std::optional<bool> reset{};  // written if a mode has a curve
};
MetadataBits write_drc_mode(const DrcModeText& mode);
MetadataBits write_drc(const std::optional<DrcText>& text);

struct DeText {
    std::optional<bool> config_flag{};  // not in I-frames
    bool config = true;
    std::uint32_t method = 0;
    std::uint32_t max_gain = 0;
    std::uint32_t channels = 0;
    std::string data{};
    std::optional<bool> simulcast{};
    std::string simulcast_data{};
};
MetadataBits write_de(const std::optional<DeText>& text);

struct EmdfText {
    std::uint32_t id = 0;
    OptionalCode smpoffst{};
    OptionalCode duration{};
    OptionalCode groupid{};
    OptionalCode codecdata{};
    bool discard = true;
    bool frame_aligned = false;
    std::vector<std::uint8_t> payload{};
    OptionalCode size{};  // in place of the true one
};
MetadataBits write_emdf_payload(const EmdfText& text);
MetadataBits write_emdf(const std::vector<EmdfText>& payloads);

struct ImsText {
    std::uint32_t version = 0;
    std::uint32_t code_3 = 0;
    bool flag_1 = false;
    OptionalCode code_5{};
    std::uint32_t code_2 = 0;
    bool flag_2 = false;
    std::optional<std::pair<std::uint32_t, bool>> tail{};
};
std::vector<std::uint8_t> write_ims(const ImsText& text);

struct SubstreamText {
    std::size_t audio_bytes = 0;
    int sus_ver = 1;
    int ch_mode = -1;
    BasicText basic{};
    ExtendedText extended{};
    MetadataBits objects{};  // oamd_dyndata_single
    std::optional<DrcText> drc{};
    std::optional<DeText> de{};
    OptionalCode tools_size{};  // in place of the true one
    std::string tools_padding{};
    std::optional<std::vector<EmdfText>> emdf{};
};
MetadataBits write_metadata(const SubstreamText& text);
std::vector<std::uint8_t> write_substream(const SubstreamText& text);

struct TargetText {
    std::uint32_t level = 0;
    std::uint32_t category = 0;
    OptionalCode extension{};
    OptionalCode ducking{};
    OptionalCode loudness{};
    std::vector<OptionalCode> substreams{};  // alt_data_set_index of the active ones
};

struct PresentationText {
    bool alternative = false;
    std::optional<std::string> name{};
    bool long_name = false;  // the form of 32 bytes without a length
    std::vector<TargetText> targets{};
    std::optional<std::string> additional{};  // bits behind the alignment, filled up to whole bytes
    std::uint32_t dialnorm = 0;
    std::optional<LoudnessText> loudness{};
    std::optional<DrcText> drc{};
    OptionalCode drc_size{};
    MetadataBits tail{};  // from the group gains on
};
MetadataBits write_presentation(const PresentationText& text);

struct TrimText {
    bool automatic = true;
    bool disabled = false;
    std::vector<OptionalCode>
        codes;  // centre, surround, height, top-bottom, listener; sign in bit 4
};

struct OamdCommonText {
    OptionalCode screen_ratio{};
    bool distribute = false;
    std::optional<std::string> additional{};  // filled up to whole bytes
};
MetadataBits write_oamd_common(const OamdCommonText& text);
MetadataBits write_trim(std::uint32_t warp_mode, std::uint32_t mode,
                        const std::vector<TrimText>& trims);

struct OamdTimingText {
    std::string sample_offset = "0";
    // Offset factor and ramp bits of each block.
    std::vector<std::pair<std::uint32_t, std::string>> blocks{};
};
MetadataBits write_oamd_timing(const OamdTimingText& text);

}  // namespace mediasplit
