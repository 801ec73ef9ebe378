#include <array>

#include "oapinfolib/src/tsc.h"

namespace mediasplit {

namespace {

constexpr int kFirstRow = 51;

// Rows 51 to 191. The wording is what users search for, slips of the pen included.
constexpr std::array<const char*, 141> kRowTexts{{
    /* 51 */ "FAILURE: OA+: AC3: BSID shall be 6 or 8",
    /* 52 */ "FAILURE: OA+: AC3: Number of channels shall be constant",
    /* 53 */ "FAILURE: OA+: AC3: Audio coding mode shall be constant",
    /* 54 */ "FAILURE: OA+: AC3: Audio coding mode shall not be 1+1",
    /* 55 */
    "FAILURE: OA+: AC3: The number of bytes per syncframe shall be constant for fs = 48kHz",
    /* 56 */
    "FAILURE: OA+: AC3: The number of bytes per syncframe shall be constant +/- 1 word for fs = "
    "44.1kHz",
    /* 57 */ "FAILURE: OA+: AC3: The total data rate of the bitstream shall be greater than 64kbps",
    /* 58 */
    "FAILURE: OA+: AC3: Total number of bytes per syncframe shall be less than or equal to 2016",
    /* 59 */ "FAILURE: OA+: AC3: Audio sampling rate shall remain constant for the program",
    /* 60 */ "FAILURE: OA+: AC3: Audio sampling rate shall be 48kHz",
    /* 61 */ "FAILURE: Orvel Audio Plus: Number of program is not constant.",
    /* 62 */ "FAILURE: Orvel Audio Plus: Program: Total number of channels is not constant.",
    /* 63 */
    "FAILURE: Orvel Audio Plus: Program: Total number of words per time_slice is not constant.",
    /* 64 */ "FAILURE: Orvel Audio Plus: Program: Audio sampling rate is not constant.",
    /* 65 */
    "FAILURE: Orvel Audio Plus: Program does not consist of a single Orvel Audio or Orvel Adio "
    "Plus bitstream or two Orvel Audio Plus substreams.",
    /* 66 */
    "FAILURE: Orvel Audio Plus: Program: Number of blocks per frame is not the same in both "
    "substreams I0 and D0.",
    /* 67 */
    "FAILURE: Orvel Audio Plus: Program: Data_rate or maximum bytes per time_slice exceeded.",
    /* 68 */ "FAILURE: Orvel Audio Plus: Primary audio: I0: BSID is not 16.",
    /* 69 */
    "FAILURE: Orvel Audio Plus: Primary audio: I0: Number of associated dependent substreams is "
    "not constant.",
    /* 70 */ "FAILURE: Orvel Audio Plus: I0: Substream ID is not 0/1/2/3.",
    /* 71 */ "FAILURE: Orvel Audio Plus: I0: Number of channels is not constant.",
    /* 72 */ "FAILURE: Orvel Audio Plus: I0: Audio coding mode is not constant.",
    /* 73 */ "FAILURE: Orvel Audio Plus: I0: Audio coding mode is 1+1, which is not allowed.",
    /* 74 */ "FAILURE: Orvel Audio Plus: I0: Sample rate is not 48kHz.",
    /* 75 */ "FAILURE: Orvel Audio Plus: I0: Source sample rate is not either 48kHz or 96kHz.",
    /* 76 */ "FAILURE: Orvel Audio Plus: I0: Number of blocks per frame is not constant.",
    /* 77 */ "FAILURE: Orvel Audio Plus: I0: Number of words per frame is not constant.",
    /* 78 */ "FAILURE: Orvel Audio Plus: I0: Number of bytes per frame is not <= 2016.",
    /* 79 */
    "FAILURE: Orvel Audio Plus: I0: For fs=48kHz, minimum number of bytes per frame deos not met.",
    /* 80 */
    "FAILURE: Orvel Audio Plus: I0: For fs=44.1kHz, minimum number of bytes per frame does not "
    "met.",
    /* 81 */
    "FAILURE: Orvel Audio Plus: I0: Converter sync bit shall is not properly set. It must be set "
    "to 1 for every 2nd I0 frame (at 3 blocks/frame).",
    /* 82 */
    "FAILURE: Orvel Audio Plus: I0: Converter sync bit shall is not properly set. It must be set "
    "to 1 for every third I0 frame (at 2 blocks/frame).",
    /* 83 */
    "FAILURE: Orvel Audio Plus: I0: Converter sync bit shall is not properly set. It must be set "
    "to 1 for every sixth I0 frame (at 1 block/frame).",
    /* 84 */ "FAILURE: Orvel Audio Plus: D0: BSID is not 16.",
    /* 85 */ "FAILURE: Orvel Audio Plus: D0: Substream ID is not 0.",
    /* 86 */
    "FAILURE: Orvel Audio Plus: D0: Number of channels is not constant in the dependent substream.",
    /* 87 */ "FAILURE: Orvel Audio Plus: D0: Channel map is not constant.",
    /* 88 */
    "FAILURE: Orvel Audio Plus: D0: Number of channels and channel map are not consistent.",
    /* 89 */ "FAILURE: Orvel Audio Plus: D0: Audio coding mode is not constant.",
    /* 90 */ "FAILURE: Orvel Audio Plus: D0: Audio coding mode is 1+1, which is not allowed.",
    /* 91 */ "FAILURE: Orvel Audio Plus: D0: Sample rate is not 48kHz.",
    /* 92 */ "FAILURE: Orvel Audio Plus: D0: Source sample rate is not 48kHz or 96kHz.",
    /* 93 */
    "FAILURE: Orvel Audio Plus: D0: Source sample rate is not same as independent substream.",
    /* 94 */ "FAILURE: Orvel Audio Plus: D0: Number of blocks per frame is not constant.",
    /* 95 */
    "FAILURE: Orvel Audio Plus: D0: Number of blocks per frame is not same as independent "
    "substream.",
    /* 96 */ "FAILURE: Orvel Audio Plus: D0: For fs=48kHz, max bytes per frame exceeded.",
    /* 97 */ "FAILURE: Orvel Audio Plus: D0: For fs=48kHz, min bytes per frame does not met.",
    /* 98 */ "FAILURE: Orvel Audio Plus: D0: For fs=44.1kHz, max bytes per frame exceeded.",
    /* 99 */ "FAILURE: Orvel Audio Plus: D0: For fs=44.1kHz, min bytes per frame does not met.",
    /* 100 */ "FAILURE: HD-DVD: EC3: Secondary Audio: I0: BSID shall be 16",
    /* 101 */
    "FAILURE: HD-DVD: EC3: Secondary Audio: I0: Number of associated dependent substreams shall be "
    "0",
    /* 102 */ "FAILURE: HD-DVD: EC3: Secondary Audio: I0: Substream ID shall be 0 (one program)",
    /* 103 */ "FAILURE: HD-DVD: EC3: Secondary Audio: I0: Number of channels shall be constant",
    /* 104 */ "FAILURE: HD-DVD: EC3: Secondary Audio: I0: Audio coding mode shall be constant",
    /* 105 */
    "FAILURE: HD-DVD: EC3: Secondary Audio: I0: Audio coding mode shall be 1/0 or 2/0 only",
    /* 106 */ "FAILURE: HD-DVD: EC3: Secondary Audio: I0: Sample rate shall be 48kHz",
    /* 107 */
    "FAILURE: HD-DVD: EC3: Secondary Audio: I0: Source sample rate shall be 48kHz, 96kHz, 44.1kHz, "
    "or 88.2kHz",
    /* 108 */
    "FAILURE: HD-DVD: EC3: Secondary Audio: I0: Number of blocks per frame shall be 6 blocks",
    /* 109 */
    "FAILURE: HD-DVD: EC3: Secondary Audio: I0: Number of words per frame shall be constant",
    /* 110 */
    "FAILURE: HD-DVD: EC3: Secondary Audio: I0: Number of bytes per frame shall be <= 2016",
    /* 111 */
    "FAILURE: HD-DVD: EC3: Secondary Audio: I0: For fs=48kHz, min bytes per frame not met",
    /* 112 */
    "FAILURE: HD-DVD: EC3: Secondary Audio: I0: For fs=44.1kHz, min bytes per frame not met",
    /* 113 */ "FAILURE: Blu-ray: Program: Bitstream shall consist of one program",
    /* 114 */ "FAILURE: Blu-ray: Program: Total number of channels shall be constant",
    /* 115 */ "FAILURE: Blu-ray: Program: Total number of words per program shall be constant",
    /* 116 */
    "FAILURE: Blu-ray: Program: Audio sampling rate of 48kHz shall remain constant for entire "
    "program",
    /* 117 */
    "FAILURE: Blu-ray: Program: Only one substream (OA) or two substreams (OA/OAP) allowed",
    /* 118 */
    "FAILURE: Blu-ray: Program: Number of blocks per frame shall be the same in both substreams I0 "
    "and D0",
    /* 119 */ "FAILURE: Blu-ray: Primary Audio: AC3 (I0): BSID shall be 6 or 8",
    /* 120 */
    "FAILURE: Blu-ray: Primary Audio: AC3 (I0): Number of dependent substreams shall be constant",
    /* 121 */ "FAILURE: Blu-ray: Primary Audio: AC3 (I0): Substream ID shall be 0 (one program)",
    /* 122 */ "FAILURE: Blu-ray: Primary Audio: AC3 (I0): Number of channels shall be constant",
    /* 123 */ "FAILURE: Blu-ray: Primary Audio: AC3 (I0): Audio coding mode shall be constant",
    /* 124 */ "FAILURE: Blu-ray: Primary Audio: AC3 (I0): Audio coding mode shall not be 1+1",
    /* 125 */ "FAILURE: Blu-ray: Primary Audio: AC3 (I0): Sample rate shall be 48kHz",
    /* 126 */
    "FAILURE: Blu-ray: Primary Audio: AC3 (I0): Number of blocks per frame shall 6 blocks",
    /* 127 */
    "FAILURE: Blu-ray: Primary Audio: AC3 (I0): Number of words per frame shall be constant",
    /* 128 */
    "FAILURE: Blu-ray: Primary Audio: AC3 (I0): Number of bytes per frame shall be <= 2560",
    /* 129 */
    "FAILURE: Blu-ray: Primary Audio: AC3 (I0): Number of bytes per frame shall be >= 256",
    /* 130 */ "FAILURE: Blu-ray: Primary Audio: EC3 (D0): BSID shall be 16",
    /* 131 */ "FAILURE: Blu-ray: Primary Audio: EC3 (D0): Number of channels shall be constant",
    /* 132 */ "FAILURE: Blu-ray: Primary Audio: EC3 (D0): Channel map shall be constant",
    /* 133 */
    "FAILURE: Blu-ray: Primary Audio: EC3 (D0): Number of channels and channel map shall be "
    "consistent",
    /* 134 */ "FAILURE: Blu-ray: Primary Audio: EC3 (D0): Audio coding mode shall be constant",
    /* 135 */ "FAILURE: Blu-ray: Primary Audio: EC3 (D0): Audio coding mode shall not be 1 + 1",
    /* 136 */ "FAILURE: Blu-ray: Primary Audio: EC3 (D0): Sample rate shall be 48kHz",
    /* 137 */ "FAILURE: Blu-ray: Primary Audio: EC3 (D0): Source sample rate shall be 96 or 48 kHz",
    /* 138 */
    "FAILURE: Blu-ray: Primary Audio: EC3 (D0): Number of blocks per frame shall be 6 blocks",
    /* 139 */
    "FAILURE: Blu-ray: Primary Audio: EC3 (D0): Number of words per frame shall be constant",
    /* 140 */
    "FAILURE: Blu-ray: Primary Audio: EC3 (D0): Maximum number of bytes per frame exceeded",
    /* 141 */
    "FAILURE: Blu-ray: Primary Audio: EC3 (D0): Minimum number of bytes per frame not met",
    /* 142 */ "FAILURE: Blu-ray: Secondary Audio: EC3 (I0): BSID shall be 16",
    /* 143 */ "FAILURE: Blu-ray: Secondary Audio: EC3 (I0): Substream ID shall be 0 (one program)",
    /* 144 */ "FAILURE: Blu-ray: Secondary Audio: EC3 (I0): Number of channels shall be constant",
    /* 145 */ "FAILURE: Blu-ray: Secondary Audio: EC3 (I0): Audio coding mode shall be constant",
    /* 146 */ "FAILURE: Blu-ray: Secondary Audio: EC3 (I0): Audio coding mode shall not be 1+1",
    /* 147 */ "FAILURE: Blu-ray: Secondary Audio: EC3 (I0): Sample rate shall be 48kHz",
    /* 148 */
    "FAILURE: Blu-ray: Secondary Audio: EC3 (I0): Source sample rate shall be 96 or 48kHz",
    /* 149 */
    "FAILURE: Blu-ray: Secondary Audio: EC3 (I0): Number of blocks per frame shall be 6 blocks",
    /* 150 */
    "FAILURE: Blu-ray: Secondary Audio: EC3 (I0): Number of words per frame shall be constant",
    /* 151 */
    "FAILURE: Blu-ray: Secondary Audio: EC3 (I0): Number of bytes per frame shall be <= 1024",
    /* 152 */
    "FAILURE: Blu-ray: Secondary Audio: EC3 (I0): The \"mixmdate\" metadata parameter shall be set "
    "to 1",
    /* 153 */
    "FAILURE: Blu-ray: Secondary Audio: EC3 (I0): The \"pgmscle\" metadata parameter shall be set "
    "to 0",
    /* 154 */
    "FAILURE: Blu-ray: Secondary Audio: EC3 (I0): The \"paninfoe\" metadata parameter can only be "
    "1 if acmod is 1/0",
    /* 155 */ "FAILURE: Blu-ray: Primary Audio: Lossless: BSID shall be 6 or 8",
    /* 156 */
    "FAILURE: Blu-ray: Primary Audio: Lossless: Number of associated dependent substreams shall be "
    "constant",
    /* 157 */ "FAILURE: Blu-ray: Primary Audio: Lossless: Number of channels shall be constant",
    /* 158 */ "FAILURE: Blu-ray: Primary Audio: Lossless: Audio coding mode shall be constant",
    /* 159 */ "FAILURE: Blu-ray: Primary Audio: Lossless: Audio coding mode shall not be 1+1",
    /* 160 */ "FAILURE: Blu-ray: Primary Audio: Lossless: Sample rate shall be 48kHz",
    /* 161 */
    "FAILURE: Blu-ray: Primary Audio: Lossless: Source sample rate shall be either 96 or 48kHz",
    /* 162 */
    "FAILURE: Blu-ray: Primary Audio: Lossless: Number of blocks per frame shall be constant",
    /* 163 */
    "FAILURE: Blu-ray: Primary Audio: Lossless: Number of words per frame shall be constant",
    /* 164 */
    "FAILURE: Blu-ray: Primary Audio: Lossless: Maximum number of bytes per frame exceeded",
    /* 165 */
    "FAILURE: Blu-ray: Primary Audio: Lossless: Minimum number of bytes per frame not met",
    /* 166 */ "FAILURE: No CRC errors shall exist in the bitstream (for HD-DVD and BD)",
    /* 167 */ "Currently unused",
    /* 168 */ "Currently unused",
    /* 169 */ "TSC: Unspecified compliance error detected",
    /* 170 */
    "FAILURE: Orvel Audio Plus: I0: Converter sync bit is not properly set. It must be set to 1 in "
    "first I0 frame",
    /* 171 */
    "FAILURE: Orvel Audio Plus: I0: Converter sync bit is not properly set. It must be set to 1 in "
    "every sixth audio block",
    /* 172 */
    "FAILURE: Orvel Audio Plus: Program: Program shall consist only of complete 6-block framesets",
    /* 173 */
    "FAILURE: HD-DVD: EC3: Secondary Audio: I0: The \"pgmscle\" metadata parameter shall be set to "
    "0",
    /* 174 */
    "FAILURE: HD-DVD: EC3: Secondary Audio: I0: The \"extpgmscle\" metadata parameter shall be set "
    "to 0",
    /* 175 */
    "FAILURE: HD-DVD: EC3: Secondary Audio: I0: The \"paninfoe\" metadata parameter shall be set "
    "to 0",
    /* 176 */
    "WARNING: HD-DVD: EC3: Secondary Audio: I0: The \"acmod\" of primary cannot be 1 (1/0)",
    /* 177 */
    "FAILURE: Blu-ray: Secondary Audio: EC3 (I0): Number of associated dependent substreams shall "
    "be 0",
    /* 178 */ "WARNING: Blu-ray: Secondary Audio: EC3 (I0): mixdef != 3 and extpgmscle = 0",
    /* 179 */
    "WARNING: Blu-ray: Secondary Audio: EC3 (I0): mixdef = 3 and extpgmscle, extpgmlscle, "
    "extpgmcscle, extpgmrscle, extpgmlsscle, extpgmrsscle, and extpgmlfescle metadata parameters "
    "are set to 0",
    /* 180 */
    "WARNING: Blu-ray: Secondary Audio: EC3 (I0): The number of channels in the secondary audio "
    "stream shall not exceed the number of channels present in the primary audio stream. A "
    "secondary audio stream with an audio coding mode of greater than 1/0 shall not contain "
    "channel locations that are not present in the primary audio stream",
    /* 181 */
    "WARNING: Blu-ray: Secondary Audio: EC3 (I0): The secondary audio stream contains extpgmlscl, "
    "therefore the primary audio must contain the L channel",
    /* 182 */
    "WARNING: Blu-ray: Secondary Audio: EC3 (I0): The secondary audio stream contains extpgmcscl, "
    "therefore the primary audio must contain the C channel",
    /* 183 */
    "WARNING: Blu-ray: Secondary Audio: EC3 (I0): The secondary audio stream contains extpgmrscl, "
    "therefore the primary audio must contain the R channel",
    /* 184 */
    "WARNING: Blu-ray: Secondary Audio: EC3 (I0): The secondary audio stream contains extpgmlsscl, "
    "therefore the primary audio must contain the ls channel",
    /* 185 */
    "WARNING: Blu-ray: Secondary Audio: EC3 (I0): The secondary audio stream contains extpgmrsscl, "
    "therefore the primary audio must contain the rs channel",
    /* 186 */
    "WARNING: Blu-ray: Secondary Audio: EC3 (I0): The secondary audio stream contains "
    "extpgmlfescl, therefore the primary audio must contain the LFE channel",
    /* 187 */
    "FAILURE: Orvel Audio Plus: Program: The stream type shall be either 0 (Independent), or 1 "
    "(Dependent)",
    /* 188 */
    "FAILURE: Blu-ray: Program: The stream type shall be either 0 (Independent), or 1 (Dependent)",
    /* 189 */ "FAILURE: Blu-ray: Primary Audio: EC3 (D0): Substream ID shall be 0 (one program)",
    /* 190 */
    "FAILURE: Blu-ray: Secondary Audio: EC3 (I0): The metadata parameters \"premixcmpsel\", "
    "\"drcsrc\", and \"premixcmpscl\" are reserved and shall be set to 0",
    /* 191 */
    "FAILURE: Blu-ray: Secondary Audio: EC3 (I0): The \"mixdef\" metadata parameter shall be set "
    "to either 0 or 3",
}};
static_assert(kFirstRow + kRowTexts.size() == kResultRows);

}  // namespace

const char* tsc_row_text(int row) {
    const bool has_text = row >= kFirstRow && row < static_cast<int>(kResultRows);
    return has_text ? kRowTexts[static_cast<std::size_t>(row - kFirstRow)] : "";
}

}  // namespace mediasplit
