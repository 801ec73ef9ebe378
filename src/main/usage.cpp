#include "src/main/usage.h"

#include <string>
#include <string_view>

#include "src/log/logging.h"
#include "src/log/output.h"
#include "src/main/build_time.h"

namespace mediasplit {

namespace {

constexpr VersionNumber kVersion{2, 0, 0, ""};
constexpr const char* kVersionSuffix = "None";

constexpr std::string_view kUsage = R"(
The media split tool can demux specified manifest files (DASH, HLS) and media files (MP4/fMP4, MPEG-2 TS).
This tool supports local input files only and common encryption files with clear key pairs.

Supported formats:
   - HLS version 3 and later
   - MPEG-DASH Live, On-demand, ATSC 3.0 profile
       For Live profile supports SegmentList, SegmentTemplate
       For Live profile supports static/dynamic type manifest
   - MP4/fMP4
   - MPEG-2 TS
   - OAP/AC4 Elemental stream

Supported codecs:
   - Orvel Audio Plus
   - Orvel AC-4
   - Orvel Prisma

Usage:
   mediasplit -i <local_input_filename> -o <output_directory> [--decryption-keys <key_ID1:key1, key_ID2:key2....>] [--track-id <track_id>] [--pid <pid>] [--px-old-signaling] [--live-duration <live_duration:seconds>]

Options:
   -h      Displays help information.
   -i      Specifies the input file. Supported input file types are playlist file (HLS), manifest file (DASH), MPEG-2 TS, MP4, and Fragmented MP4 files.
   -o      Sets the output folder path.
   -s      Specifies the beginning index segment of MPEG-2 TS sequence, default is 0.
   -v      Prints version information.
   --decryption-keys A comma-separated list of key_ID:key pairs, each represented as 32 hex digits.
   --track-id Demultiplex a specified track from MP4/fMP4. (Serve for MP4/fMP4 only, not for MPEG2-TS, DASH, HLS)
   --pid      Demultiplex a specified substream with pid from MPEG2-TS. (Serve for MPEG2-TS only, not for MP4/fMP4, DASH, HLS)
   --live-duration Specifies the duration to be tested in the live stream (unit: seconds), default is 10.0s.

Examples:
    - Take an HLS playlist apart:
        mediasplit -i input.m3u8 -o tmp

    - Take apart all files of an MPEG-2 TS series, numbered from 0:
        mediasplit -i input_%d.ts -o tmp

    - Take apart the files of an MPEG-2 TS series from number 2 on:
        mediasplit -i input_%d.ts -s 2 -o tmp

    - Take apart an MPEG-2 TS series whose numbers have x digits:
        mediasplit -i input_%0[x]d.ts -o tmp

    - Take apart an MPEG-2 TS series whose numbers have four digits:
        mediasplit -i input_%04d.ts -o tmp

    - Take a DASH stream apart:
        mediasplit -i ChID_voices_51_256_oap.mpd -o tmp

    - Take an MP4 file apart:
        mediasplit -i ChID_voices_51_256_oap.mp4 -o tmp

    - Take one track out of an MP4 file:
        mediasplit -i ChID_voices_51_256_oap.mp4 -o tmp --track-id 1

    - Take the substream with one PID out of an MPEG-2 TS file:
        mediasplit -i ChID_voices_51_256_oap.ts -o tmp --pid 100
)";

void print_starred(const std::string& text) {
    // Plain output can't fail the run.
    static_cast<void>(Logging_err_type_check(nullptr, 2, {}, text));
}

}  // namespace

const VersionNumber& get_version_num() {
    return kVersion;
}

void print_version() {
    print_starred("Media Split Tool");
    print_starred("Version " + std::to_string(kVersion.major_number) + "." +
                  std::to_string(kVersion.minor_number) + "." +
                  std::to_string(kVersion.patch_number) + "." + kVersionSuffix);
    print_starred(std::string("Built on ") + kBuildTime + " " + kBuildDate);
}

void print_usage() {
    write_to_stdout(kUsage);
}

void cmdShowUsage() {
    print_version();
    print_usage();
}

}  // namespace mediasplit
