#include <array>
#include <span>

#include "oapinfolib/src/bsid.h"
#include "oapinfolib/src/bsid_tables.h"
#include "oapinfolib/src/disp.h"
#include "oapinfolib/src/disp_line.h"

// Header fields of one frame, a line each: name, value, meaning. What a line needs stands in one
// row of a table, in the order of the record.

namespace mediasplit {

namespace {

using Info = BitstreamInfo;
using Word = std::uint16_t;
using Texts = std::span<const char* const>;

constexpr const char* kStrmtypTexts[] = {"Independent", "Dependent", "Transcoded", "Reserved"};
constexpr const char* kFscodTexts[] = {"48 kHz", "44.1 kHz", "32 kHz", "Reserved"};
constexpr const char* kSourceFscodTexts[] = {"fscod", "twice fscod"};
constexpr const char* kNumblksTexts[] = {"1 block per syncframe", "2 blocks per syncframe",
                                         "3 blocks per syncframe", "6 blocks per syncframe"};
constexpr const char* kAcmodTexts[] = {
    "1+1, channel ordering: ch1, ch2",     "1/0, channel ordering: C",
    "2/0, channel ordering: L, R",         "3/0, channel ordering: L, C, R",
    "2/1, channel ordering: L, R, S",      "3/1, channel ordering: L, C, R, S",
    "2/2, channel ordering: L, R, ls, rs", "3/2, channel ordering: L, C, R, ls, rs"};
constexpr const char* kBsmodTexts[] = {"complete main",    "music and effects", "visually impaired",
                                       "hearing impaired", "dialogue",          "commentary",
                                       "emergency",        "voice over",        "karaoke"};
constexpr const char* kChanmapTexts[] = {"Left",
                                         "Center",
                                         "Right",
                                         "Left Surround",
                                         "Right Surround",
                                         "Lc/Rc pair",
                                         "Lrs/Rrs pair",
                                         "Cs",
                                         "Ts",
                                         "Lsd/Rsd pair",
                                         "Lw/Rw pair",
                                         "Lvh/Rvh pair",
                                         "Cvh",
                                         "Reserved",
                                         "LFE2",
                                         "LFE"};
constexpr const char* kCmixlevTexts[] = {"-3.0 dB", "-4.5 dB", "-6.0 dB", "reserved"};
constexpr const char* kSurmixlevTexts[] = {"-3.0 dB", "-6.0 dB", "-inf dB", "reserved"};
constexpr const char* kDsurmodTexts[] = {"not indicated", "not Orvel Surround encoded",
                                         "Orvel Surround encoded", "reserved"};
constexpr const char* kRoomtypTexts[] = {"not indicated", "large room, X curve", "small room, flat",
                                         "reserved"};
constexpr const char* kDmixmodTexts[] = {"not indicated", "Lt/Rt", "Lo/Ro", "reserved"};
constexpr const char* kCenterLevelTexts[] = {"+3.0 dB", "+1.5 dB", "0.0 dB",  "-1.5 dB",
                                             "-3.0 dB", "-4.5 dB", "-6.0 dB", "-inf dB"};
constexpr const char* kSurroundLevelTexts[] = {"reserved", "reserved", "reserved", "-1.5dB",
                                               "-3.0 dB",  "-4.5 dB",  "-6.0 dB",  "-inf dB"};
constexpr const char* kMixdefTexts[] = {"No additional bits", "5 bits reserved", "12 bits reserved",
                                        "16-264 bits reserved by mixdeflen"};
constexpr const char* kDsurexmodTexts[] = {"not indicated", "not Orvel Surround EX encoded",
                                           "Orvel Surround EX encoded", "reserved"};
constexpr const char* kDheadphonmodTexts[] = {"not indicated", "not Orvel Headphone encoded",
                                              "Orvel Headphone encoded", "reserved"};
constexpr const char* kAdconvtypTexts[] = {"standard", "HDCD encoded"};
constexpr const char* kCopyrightTexts[] = {"not indicated as copyrighted",
                                           "indicated as copyrighted"};
constexpr const char* kOrigbsTexts[] = {"copy of another bitstream", "original bitstream"};
constexpr const char* kPresenceTexts[] = {"does not exist", "exists"};
constexpr const char* kOnOffTexts[] = {"Off", "On"};

// Gain of compr in dB: by the high four bits, a signed number of 6.02 dB steps, and by the low four
// (ETSI TS 102 366 7.7.2.2).
constexpr std::array<double, 16> comprmsbvals{
    6.020600,   12.041200,  18.061800,  24.082400,  30.103000,  36.123599,  42.144199, 48.164799,
    -42.144199, -36.123599, -30.103000, -24.082400, -18.061800, -12.041200, -6.020600, 0.0};
constexpr std::array<double, 16> comprlsbvals{
    -6.020600, -5.494021, -4.997549, -4.527928, -4.082400, -3.658614, -3.254546, -2.868443,
    -2.498775, -2.144199, -1.803533, -1.475724, -1.159839, -0.855040, -0.560574, -0.275766};

// Value of a field, of one of a pair, or of one of an array.
template <Word Info::*Field>
Word field(const Info& info) {
    return info.*Field;
}
template <Info::Pair Info::*Field, std::size_t Program>
Word field(const Info& info) {
    return (info.*Field)[Program];
}
template <std::size_t Block>
Word block_config(const Info& info) {
    return info.blkmixcfginfo[Block];
}

// When a line is shown.
bool always(const Info&) {
    return true;
}
bool is_oa(const Info& info) {
    return is_oa_bsid(info.bsid);
}
bool is_oap(const Info& info) {
    return is_oap_bsid(info.bsid);
}
bool has_second_program(const Info& info) {
    return info.nprograms == 2;
}
bool has_second_program_oa(const Info& info) {
    return is_oa(info) && has_second_program(info);
}
bool has_information(const Info& info) {
    return is_oa(info) || info.infomdate != 0;
}
bool has_second_information(const Info& info) {
    return has_information(info) && has_second_program(info);
}
bool has_mixing(const Info& info) {
    return is_oap(info) && info.mixmdate != 0;
}
bool has_program_mixing(const Info& info) {
    return has_mixing(info) && info.strmtyp == 0;
}
bool has_second_program_mixing(const Info& info) {
    return has_program_mixing(info) && has_second_program(info);
}
bool has_center_level(const Info& info) {
    const bool has_center = (info.acmod & 1U) != 0 && info.acmod > 2;
    return has_center && (is_oa(info) || info.mixlevels_present != 0);
}
bool has_surround_level(const Info& info) {
    return (info.acmod & 4U) != 0 && (is_oa(info) || info.mixlevels_present != 0);
}
bool has_xbsi_levels(const Info& info) {
    return info.mixlevels_present != 0;
}
bool has_time_codes(const Info& info) {
    return is_oa(info) && info.bsid != 6;
}
bool is_alternate(const Info& info) {
    return info.bsid == 6;
}
bool has_mixdef3(const Info& info) {
    return has_program_mixing(info) && info.mixdef == 3;
}
bool has_mixdata2(const Info& info) {
    return has_mixdef3(info) && info.mixdata2e != 0;
}
bool has_premix(const Info& info) {
    return has_mixdata2(info) || (has_program_mixing(info) && info.mixdef == 1);
}
bool has_aux_channels(const Info& info) {
    return has_mixdata2(info) && info.addche != 0;
}
bool has_pan(const Info& info) {
    return has_program_mixing(info) && info.acmod < 2;
}
bool has_second_pan(const Info& info) {
    return has_pan(info) && has_second_program(info);
}
bool has_block_config(const Info& info) {
    return has_program_mixing(info) && info.frmmixcfginfoe != 0;
}
bool has_block_flags(const Info& info) {
    return has_block_config(info) && info.numblks > 1;
}
template <std::size_t Block>
bool has_block(const Info& info) {
    return has_block_config(info) && Block < info.numblks;
}
bool is_frmsizecod_coded(const Info& info) {
    return is_oa(info) || (info.strmtyp == 2 && info.blkid == 1);
}
bool has_adconvtyp(const Info& info) {
    return info.xbsi2e != 0 || (is_oap(info) && info.infomdate != 0);
}
bool has_second_adconvtyp(const Info& info) {
    return is_oap(info) && info.infomdate != 0 && has_second_program(info);
}
bool has_sourcefscod(const Info& info) {
    return is_oap(info) && info.infomdate != 0;
}
bool has_convsync(const Info& info) {
    return is_oap(info) && info.strmtyp == 0;
}

// Another condition besides: a flag of the header is set.
template <bool (*Shown)(const Info&), Word Info::*Flag>
bool if_set(const Info& info) {
    return Shown(info) && info.*Flag != 0;
}
template <bool (*Shown)(const Info&), Info::Pair Info::*Flag, std::size_t Program>
bool if_set(const Info& info) {
    return Shown(info) && (info.*Flag)[Program] != 0;
}
template <Word Info::*Flag>
bool if_flag(const Info& info) {
    return info.*Flag != 0;
}

// Meanings that aren't the text of a value.
void note_numblks(const Info&, Word value, DispLine& line) {
    const std::size_t code = value == 6 ? 3 : value - std::size_t{1};
    line.took(std::snprintf(line.at(), line.room(), " (Number of blocks: %s)",
                            code < std::size(kNumblksTexts) ? kNumblksTexts[code] : "reserved"));
}
void note_bsmod(const Info& info, Word value, DispLine& line) {
    const std::size_t index = value == 7 && info.acmod != 1 ? 8 : value & 7U;
    line.took(std::snprintf(line.at(), line.room(), " (Bitstream mode: %s)", kBsmodTexts[index]));
}
void note_dialnorm(const Info&, Word value, DispLine& line) {
    line.took(std::snprintf(line.at(), line.room(), " (Dialog Normalization: -%ddB)", int{value}));
}
void note_compr(const Info&, Word value, DispLine& line) {
    const unsigned code = value >> 8U;
    line.took(std::snprintf(line.at(), line.room(), " (Heavy Compression: %fdB)",
                            comprmsbvals[code >> 4U & 15U] + comprlsbvals[code & 15U]));
}
void note_mixlevel(const Info&, Word value, DispLine& line) {
    line.took(std::snprintf(line.at(), line.room(), " (Mix level: %ddB SPL)", value + 80));
}
void note_frmsiz(const Info&, Word value, DispLine& line) {
    line.took(std::snprintf(line.at(), line.room(), " (Frame size: %d 16b words)", int{value}));
}
void note_frmsizecod(const Info& info, Word value, DispLine& line) {
    if (value <= kMaxFrmsizecod) {
        line.took(std::snprintf(line.at(), line.room(), " (Frame size: %d 16b words)",
                                int{kFrameSize[info.fscod % 3U][value]}));
    }
}
void note_scale(const Info&, Word value, DispLine& line) {
    if (value == 0) {
        line.add(" (Scale factor: mute)");
    } else {
        line.took(std::snprintf(line.at(), line.room(), " (Scale factor: %ddB)", value - 51));
    }
}
void note_lfemix(const Info&, Word value, DispLine& line) {
    line.took(std::snprintf(line.at(), line.room(), " (LFE mix level: %ddB)", 10 - value));
}
void note_addbsil(const Info&, Word value, DispLine& line) {
    line.took(std::snprintf(line.at(), line.room(), " (%d bytes)", value + 1));
}
void note_chanmap(const Info&, Word value, DispLine& line) {
    line.add(" (Channel map:");
    const char* separator = " ";
    for (std::size_t position = 0; position < kChannelPositions; ++position) {
        if ((unsigned{value} >> (kChannelPositions - 1 - position) & 1U) != 0) {
            line.add(separator);
            line.add(kChanmapTexts[position]);
            separator = ", ";
        }
    }
    line.add(")");
}
// The bytes themselves stand on the line of their own name.
void note_addbsi(const Info& info, Word, DispLine& line) {
    for (std::size_t i = 1; i <= info.addbsil && i < info.addbsi.size(); ++i) {
        line.took(std::snprintf(line.at(), line.room(), " 0x%04hX", Word{info.addbsi[i]}));
    }
}
Word first_addbsi(const Info& info) {
    return info.addbsi[0];
}

struct BsiLine {
    const char* name;
    Word (*value)(const Info&);
    bool (*shown)(const Info&);
    const char* label = nullptr;  // what `texts` are about
    Texts texts{};
    void (*note)(const Info&, Word, DispLine&) = nullptr;
};

constexpr BsiLine plain(const char* name, Word (*value)(const Info&), bool (*shown)(const Info&)) {
    return {name, value, shown};
}
constexpr BsiLine texted(const char* name, Word (*value)(const Info&), bool (*shown)(const Info&),
                         const char* label, Texts texts) {
    return {name, value, shown, label, texts};
}
constexpr BsiLine noted(const char* name, Word (*value)(const Info&), bool (*shown)(const Info&),
                        void (*note)(const Info&, Word, DispLine&)) {
    return {name, value, shown, nullptr, {}, note};
}

constexpr BsiLine kLines[] = {
    plain("syncword", field<&Info::syncword>, always),
    plain("crc1", field<&Info::crc1>, is_oa),
    texted("fscod", field<&Info::fscod>, always, "Sample rate code", kFscodTexts),
    noted("frmsizecod", field<&Info::frmsizecod>, is_frmsizecod_coded, note_frmsizecod),
    plain("bsid", field<&Info::bsid>, always),
    noted("bsmod", field<&Info::bsmod>, has_information, note_bsmod),
    texted("acmod", field<&Info::acmod>, always, "Audio coding mode", kAcmodTexts),
    texted("lfeon", field<&Info::lfeon>, always, "LFE", kOnOffTexts),
    plain("nfchans", field<&Info::nfchans>, always),
    plain("nchans", field<&Info::nchans>, always),
    plain("nprograms", field<&Info::nprograms>, always),
    texted("karaoke", field<&Info::karaoke>, always, "Karaoke", kOnOffTexts),
    texted("cmixlev", field<&Info::cmixlev>, has_center_level, "Center mix level", kCmixlevTexts),
    texted("surmixlev", field<&Info::surmixlev>, has_surround_level, "Surround mix level",
           kSurmixlevTexts),
    texted(
        "dsurmod", field<&Info::dsurmod>,
        [](const Info& info) { return has_information(info) && info.acmod == 2; }, "Surround mode",
        kDsurmodTexts),
    noted("dialnorm", field<&Info::dialnorm, 0>, always, note_dialnorm),
    texted("compre", field<&Info::compre, 0>, always, "Heavy compression", kPresenceTexts),
    noted("compr", field<&Info::compr, 0>, if_set<always, &Info::compre, 0>, note_compr),
    noted("dialnorm2", field<&Info::dialnorm, 1>, has_second_program, note_dialnorm),
    texted("compr2e", field<&Info::compre, 1>, has_second_program, "Heavy compression",
           kPresenceTexts),
    noted("compr2", field<&Info::compr, 1>, if_set<has_second_program, &Info::compre, 1>,
          note_compr),
    texted("langcode", field<&Info::langcode, 0>, is_oa, "Language code", kPresenceTexts),
    texted("langcod2e", field<&Info::langcode, 1>, has_second_program_oa, "Language code",
           kPresenceTexts),
    plain("langcod", field<&Info::langcod, 0>, if_set<is_oa, &Info::langcode, 0>),
    plain("langcod2", field<&Info::langcod, 1>, if_set<has_second_program_oa, &Info::langcode, 1>),
    texted("audprodie", field<&Info::audprodie, 0>, has_information, "Audio production information",
           kPresenceTexts),
    texted("audprodi2e", field<&Info::audprodie, 1>, has_second_information,
           "Audio production information", kPresenceTexts),
    noted("mixlevel", field<&Info::mixlevel, 0>, if_set<has_information, &Info::audprodie, 0>,
          note_mixlevel),
    noted("mixlevel2", field<&Info::mixlevel, 1>,
          if_set<has_second_information, &Info::audprodie, 1>, note_mixlevel),
    texted("roomtyp", field<&Info::roomtyp, 0>, if_set<has_information, &Info::audprodie, 0>,
           "Room type", kRoomtypTexts),
    texted("roomtyp2", field<&Info::roomtyp, 1>,
           if_set<has_second_information, &Info::audprodie, 1>, "Room type", kRoomtypTexts),
    texted("copyrightb", field<&Info::copyrightb>, has_information, "Copyright", kCopyrightTexts),
    texted("origbs", field<&Info::origbs>, has_information, "Original", kOrigbsTexts),
    texted("timecod1e", field<&Info::timecod1e>, has_time_codes, "Time code 1", kPresenceTexts),
    plain("timecod1", field<&Info::timecod1>, if_set<has_time_codes, &Info::timecod1e>),
    texted("timecod2e", field<&Info::timecod2e>, has_time_codes, "Time code 2", kPresenceTexts),
    plain("timecod2", field<&Info::timecod2>, if_set<has_time_codes, &Info::timecod2e>),
    texted("xbsi1e", field<&Info::xbsi1e>, is_alternate, "Extra bitstream information 1",
           kPresenceTexts),
    texted("dmixmod", field<&Info::dmixmod>, if_flag<&Info::dmixmod_present>,
           "Preferred downmix mode", kDmixmodTexts),
    texted("ltrtcmixlev", field<&Info::ltrtcmixlev>, has_xbsi_levels, "Lt/Rt center mix level",
           kCenterLevelTexts),
    texted("ltrtsurmixlev", field<&Info::ltrtsurmixlev>, has_xbsi_levels,
           "Lt/Rt surround mix level", kSurroundLevelTexts),
    texted("lorocmixlev", field<&Info::lorocmixlev>, has_xbsi_levels, "Lo/Ro center mix level",
           kCenterLevelTexts),
    texted("lorosurmixlev", field<&Info::lorosurmixlev>, has_xbsi_levels,
           "Lo/Ro surround mix level", kSurroundLevelTexts),
    texted("xbsi2e", field<&Info::xbsi2e>, is_alternate, "Extra bitstream information 2",
           kPresenceTexts),
    texted("dsurexmod", field<&Info::dsurexmod>, if_flag<&Info::dsurexmod_present>,
           "Surround EX mode", kDsurexmodTexts),
    texted("dheadphonmod", field<&Info::dheadphonmod>, if_flag<&Info::dheadphonmod_present>,
           "Headphone mode", kDheadphonmodTexts),
    texted("adconvtyp", field<&Info::adconvtyp, 0>, has_adconvtyp, "A/D converter type",
           kAdconvtypTexts),
    texted("adconvtyp2", field<&Info::adconvtyp, 1>, has_second_adconvtyp, "A/D converter type",
           kAdconvtypTexts),
    plain("xbsi2", field<&Info::xbsi2>, if_flag<&Info::xbsi2e>),
    plain("encinfo", field<&Info::encinfo>, if_flag<&Info::xbsi2e>),
    texted("addbsie", field<&Info::addbsie>, always, "Additional bitstream information",
           kPresenceTexts),
    noted("addbsil", field<&Info::addbsil>, if_flag<&Info::addbsie>, note_addbsil),
    noted("addbsi", first_addbsi, if_flag<&Info::addbsie>, note_addbsi),
    texted("strmtyp", field<&Info::strmtyp>, is_oap, "Stream type", kStrmtypTexts),
    plain("substreamid", field<&Info::substreamid>, is_oap),
    noted("frmsiz", field<&Info::frmsiz>, is_oap, note_frmsiz),
    texted(
        "chanmape", field<&Info::chanmape>,
        [](const Info& info) { return is_oap(info) && info.strmtyp == 1; }, "Custom channel map",
        kPresenceTexts),
    noted(
        "chanmap", field<&Info::chanmap>,
        [](const Info& info) { return is_oap(info) && info.strmtyp == 1; }, note_chanmap),
    texted("mixmdate", field<&Info::mixmdate>, is_oap, "Mixing metadata", kPresenceTexts),
    texted("lfemixlevcode", field<&Info::lfemixlevcode>, if_set<has_mixing, &Info::lfeon>,
           "LFE mix level code", kPresenceTexts),
    noted("lfemixlevcod", field<&Info::lfemixlevcod>, if_set<has_mixing, &Info::lfemixlevcode>,
          note_lfemix),
    texted("pgmscle", field<&Info::pgmscle, 0>, has_program_mixing, "Program scale factor",
           kPresenceTexts),
    texted("pgmscl2e", field<&Info::pgmscle, 1>, has_second_program_mixing, "Program scale factor",
           kPresenceTexts),
    noted("pgmscl", field<&Info::pgmscl, 0>, has_program_mixing, note_scale),
    noted("pgmscl2", field<&Info::pgmscl, 1>, has_second_program_mixing, note_scale),
    texted("extpgmscle", field<&Info::extpgmscle>, has_program_mixing,
           "External program scale factor", kPresenceTexts),
    noted("extpgmscl", field<&Info::extpgmscl>, has_program_mixing, note_scale),
    texted("mixdef", field<&Info::mixdef>, has_program_mixing, "Mix control", kMixdefTexts),
    plain("mixdeflen", field<&Info::mixdeflen>, has_mixdef3),
    texted("mixdata2e", field<&Info::mixdata2e>, has_mixdef3, "Mix data 2", kPresenceTexts),
    plain("premixcmpsel", field<&Info::premixcmpsel>, has_premix),
    plain("drcsrc", field<&Info::drcsrc>, has_premix),
    plain("premixcmpscl", field<&Info::premixcmpscl>, has_premix),
    texted("extpgmlscle", field<&Info::extpgmlscle>, has_mixdata2, "Left scale factor",
           kPresenceTexts),
    texted("extpgmcscle", field<&Info::extpgmcscle>, has_mixdata2, "Center scale factor",
           kPresenceTexts),
    texted("extpgmrscle", field<&Info::extpgmrscle>, has_mixdata2, "Right scale factor",
           kPresenceTexts),
    texted("extpgmlsscle", field<&Info::extpgmlsscle>, has_mixdata2, "Left surround scale factor",
           kPresenceTexts),
    texted("extpgmrsscle", field<&Info::extpgmrsscle>, has_mixdata2, "Right surround scale factor",
           kPresenceTexts),
    texted("extpgmlfescle", field<&Info::extpgmlfescle>, has_mixdata2, "LFE scale factor",
           kPresenceTexts),
    plain("extpgmlscl", field<&Info::extpgmlscl>, if_set<has_mixdata2, &Info::extpgmlscle>),
    plain("extpgmcscl", field<&Info::extpgmcscl>, if_set<has_mixdata2, &Info::extpgmcscle>),
    plain("extpgmrscl", field<&Info::extpgmrscl>, if_set<has_mixdata2, &Info::extpgmrscle>),
    plain("extpgmlsscl", field<&Info::extpgmlsscl>, if_set<has_mixdata2, &Info::extpgmlsscle>),
    plain("extpgmrsscl", field<&Info::extpgmrsscl>, if_set<has_mixdata2, &Info::extpgmrsscle>),
    plain("extpgmlfescl", field<&Info::extpgmlfescl>, if_set<has_mixdata2, &Info::extpgmlfescle>),
    texted("dmixscle", field<&Info::dmixscle>, has_mixdata2, "Downmix scale factor",
           kPresenceTexts),
    plain("dmixscl", field<&Info::dmixscl>, if_set<has_mixdata2, &Info::dmixscle>),
    texted("addche", field<&Info::addche>, has_mixdata2, "Additional channels", kPresenceTexts),
    texted("extpgmaux1scle", field<&Info::extpgmaux1scle>, has_aux_channels,
           "Auxiliary channel 1 scale factor", kPresenceTexts),
    plain("extpgmaux1scl", field<&Info::extpgmaux1scl>,
          if_set<has_aux_channels, &Info::extpgmaux1scle>),
    texted("extpgmaux2scle", field<&Info::extpgmaux2scle>, has_aux_channels,
           "Auxiliary channel 2 scale factor", kPresenceTexts),
    plain("extpgmaux2scl", field<&Info::extpgmaux2scl>,
          if_set<has_aux_channels, &Info::extpgmaux2scle>),
    texted("frmmixcfginfoe", field<&Info::frmmixcfginfoe>, has_program_mixing,
           "Frame mixing configuration", kPresenceTexts),
    texted("blkmixcfginfoe", field<&Info::blkmixcfginfoe>, has_block_flags,
           "Block mixing configuration", kPresenceTexts),
    plain("blkmixcfginfo[0]", block_config<0>, has_block<0>),
    plain("blkmixcfginfo[1]", block_config<1>, has_block<1>),
    plain("blkmixcfginfo[2]", block_config<2>, has_block<2>),
    plain("blkmixcfginfo[3]", block_config<3>, has_block<3>),
    plain("blkmixcfginfo[4]", block_config<4>, has_block<4>),
    plain("blkmixcfginfo[5]", block_config<5>, has_block<5>),
    texted("paninfoe", field<&Info::paninfoe, 0>, has_pan, "Pan information", kPresenceTexts),
    texted("paninfo2e", field<&Info::paninfoe, 1>, has_second_pan, "Pan information",
           kPresenceTexts),
    plain("panmean", field<&Info::panmean, 0>, if_set<has_pan, &Info::paninfoe, 0>),
    plain("panmean2", field<&Info::panmean, 1>, if_set<has_second_pan, &Info::paninfoe, 1>),
    plain("paninfo", field<&Info::paninfo, 0>, if_set<has_pan, &Info::paninfoe, 0>),
    plain("paninfo2", field<&Info::paninfo, 1>, if_set<has_second_pan, &Info::paninfoe, 1>),
    texted("infomdate", field<&Info::infomdate>, is_oap, "Informational metadata", kPresenceTexts),
    texted("sourcefscod", field<&Info::sourcefscod>, has_sourcefscod, "Source sample rate code",
           kSourceFscodTexts),
    texted("convsync", field<&Info::convsync>, has_convsync, "Converter synchronization",
           kOnOffTexts),
    texted(
        "blkid", field<&Info::blkid>,
        [](const Info& info) { return is_oap(info) && info.strmtyp == 2; }, "Block identification",
        kOnOffTexts),
    noted("numblks", field<&Info::numblks>, always, note_numblks),
};

const char* text_of(Texts texts, Word value) {
    return value < texts.size() ? texts[value] : "reserved";
}

}  // namespace

int disp_printbsi(const BitstreamInfo& info, bool has_crc_error) {
    DispLine line;
    line.took(std::snprintf(line.at(), line.room(), "            %s Bitstream Information:",
                            is_oap(info) ? "Orvel Audio Plus" : "Orvel Audio"));
    line.end(has_crc_error);
    for (const BsiLine& row : kLines) {
        if (!row.shown(info)) {
            continue;
        }
        const Word value = row.value(info);
        line.took(
            std::snprintf(line.at(), line.room(), "            %s: 0x%04hX", row.name, value));
        if (row.label != nullptr) {
            line.took(std::snprintf(line.at(), line.room(), " (%s: %s)", row.label,
                                    text_of(row.texts, value)));
        } else if (row.note != nullptr) {
            row.note(info, value, line);
        }
        line.end(has_crc_error);
    }
    return 0;
}

}  // namespace mediasplit
