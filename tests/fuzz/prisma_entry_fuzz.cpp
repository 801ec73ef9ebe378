// A video track with a configuration of the enhancement format and what a manifest says of it. Of
// the input, five bytes choose manifest, sample entry, configuration box and the sizes of the two
// configurations; these follow, then lines of manifest texts, and the rest is the track's sample.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "src/dash_reader/dash_info.h"
#include "src/fmp4demuxer/dash_context.h"
#include "src/fmp4demuxer/fmp4demux.h"
#include "src/records/manifest_context.h"
#include "src/records/segment_slot.h"
#include "tests/support/mp4_builder.h"
#include "tests/support/mp4_input.h"

namespace mediasplit {
namespace {

constexpr const char* kEntries[] = {"avc1", "avc3", "pxav", "pxa1", "pavc", "hvc1",
                                    "hev1", "pxhe", "pxh1", "pxh8", "av01", "pav1"};
constexpr const char* kPrismaBoxes[] = {"pxcC", "pxvC", "pxwC", "free"};
constexpr std::array<std::uint32_t, 4> kModes{kInputFile, kInputDash, kInputHls, kInputHlsIframe};
constexpr const char* kFamilies[] = {"430000", "420000", "410000", "440000", "450000"};

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    std::uint8_t byte() {
        const mp4::Bytes one = bytes(1);
        return one.empty() ? std::uint8_t{0} : one[0];
    }
    mp4::Bytes bytes(std::size_t count) {
        const std::size_t taken = std::min(count, size_);
        mp4::Bytes result(data_, data_ + taken);
        data_ += taken;
        size_ -= taken;
        return result;
    }
    std::string line() {
        const auto* const end = std::find(data_, data_ + size_, '\n');
        const mp4::Bytes text = bytes(static_cast<std::size_t>(end - data_));
        static_cast<void>(bytes(1));
        return {text.begin(), text.end()};
    }
    mp4::Bytes rest() { return bytes(size_); }

private:
    const std::uint8_t* data_;
    std::size_t size_;
};

const char* codec_box_of(std::string_view entry) {
    if (entry.find("av0") != std::string_view::npos || entry == "pav1") {
        return "av1C";
    }
    return entry.find('h') != std::string_view::npos ? "hvcC" : "avcC";
}

struct Manifest {
    DashInfo mpd{};
    DashContext dash{};
    ManifestContext playlist{};
};

void read_manifest(Input& input, Manifest& manifest) {
    const std::string codecs = input.line();
    const std::string shared_codecs = input.line();
    const std::string supplement = input.line();
    const std::string brand = input.line();
    const std::string range = input.line();

    manifest.mpd.periods.emplace_back();
    DashPeriodInfo& period = manifest.mpd.periods.front();
    period.adaptation_sets.resize(2);
    period.representations.emplace_back();
    DashRepresentationInfo& representation = period.representations.front();
    representation.codecs = codecs;
    representation.supplementalCodecs = supplement;
    representation.supplementalProfiles = brand;
    representation.segmentProfiles = range;
    for (std::uint32_t set = 0; set < 3 && !shared_codecs.empty(); ++set) {
        DashRepresentationInfo shared;
        shared.codecs = shared_codecs;
        shared.adaptation_set_index = set;
        representation.shared_init_representations.push_back(shared);
    }
    manifest.dash.mpd = &manifest.mpd;
    manifest.dash.period = &period;
    manifest.dash.adaptation_set = &period.adaptation_sets.front();
    manifest.dash.representation = &representation;
    manifest.dash.codecs = codecs;
    manifest.dash.related_codecs = {shared_codecs};

    manifest.playlist.codecs = codecs;
    manifest.playlist.variant_codecs = codecs;
    manifest.playlist.duplicate_codecs_1 = shared_codecs;
    manifest.playlist.supplemental_codecs = supplement;
    manifest.playlist.video_range = range;
    manifest.playlist.req_video_layout = range;
}

void run(Input input) {
    const std::uint32_t mode = kModes[input.byte() % kModes.size()];
    const char* const entry = kEntries[input.byte() % std::size(kEntries)];
    const char* const prisma_box = kPrismaBoxes[input.byte() % std::size(kPrismaBoxes)];
    const std::size_t prisma_size = input.byte() % 32U;
    const std::size_t codec_size = input.byte();
    const mp4::Bytes prisma = mp4::box(prisma_box, {input.bytes(prisma_size)});
    const mp4::Bytes codec = mp4::box(codec_box_of(entry), {input.bytes(codec_size)});
    Manifest manifest;
    read_manifest(input, manifest);

    mp4::MovieSpec movie;
    movie.ftyp_box = mp4::ftyp("isom", {"orv1", "cmfc"});
    mp4::TrackSpec track;
    track.entries = {mp4::video_entry(entry, 64, 64, {codec, prisma})};
    mp4::SampleSpec sample;
    sample.data = input.rest();
    track.samples = {sample};
    movie.tracks = {track};

    CheckpointText families[std::size(kFamilies)]{};
    for (std::size_t i = 0; i < std::size(kFamilies); ++i) {
        std::copy_n(kFamilies[i], 6, families[i].begin());
    }
    const auto loglist = init_loglist(static_cast<std::uint32_t>(std::size(families)), families);
    const bool is_hls = mode == kInputHls || mode == kInputHlsIframe;
    manifest.playlist.is_iframe_stream = mode == kInputHlsIframe ? 1 : 0;
    Status status = Status::kOk;
    auto demuxer =
        fmp4demux_create(nullptr, nullptr, nullptr, is_hls ? &manifest.playlist : nullptr,
                         mode == kInputDash ? &manifest.dash : nullptr, nullptr, nullptr, &status,
                         loglist.get(), kAllTracks);
    const mp4::Bytes file = mp4::plain_file(movie);
    mp4::MemoryInput opened(file);
    SegmentSlot slot;
    slot.kind = kSlotInitialization;
    static_cast<void>(fmp4demux(&opened.file(), &slot, demuxer.get(), nullptr));
    static_cast<void>(fmp4demux_destroy(std::move(demuxer)));
}

}  // namespace
}  // namespace mediasplit

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The walker's lines are no news here.
    static const bool kQuiet = std::freopen("/dev/null", "w", stdout) != nullptr;
    if (!kQuiet) {
        std::abort();
    }
    mediasplit::run({data, size});
    return 0;
}
