// Whole files through the track driver. The last byte of the input chooses what the file is taken
// for: a plain file, a segment of a playlist, or a file with a segment index.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>

#include "src/fmp4demuxer/fmp4demux.h"
#include "src/fmp4demuxer/segment_index.h"
#include "tests/support/temp_folder.h"

namespace mediasplit {
namespace {

constexpr std::uint8_t kAsPlaylist = 1;
constexpr std::uint8_t kByIndex = 2;

const std::string& output_folder() {
    static const TempFolder folder;
    static const std::string path = [] {
        // The walker's lines are no news here.
        if (std::freopen("/dev/null", "w", stdout) == nullptr) {
            std::abort();
        }
        return folder.path();
    }();
    return path;
}

// The bytes as a nameless file.
void open_input(std::span<const std::uint8_t> bytes, InputFile& file) {
    const int descriptor = memfd_create("input", 0);
    if (write(descriptor, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
        std::abort();
    }
    lseek(descriptor, 0, SEEK_SET);
    static_cast<void>(
        ReadFileExt(FileDescriptor(descriptor), nullptr, nullptr, 0, "memory.mp4", file));
}

void run(std::span<const std::uint8_t> bytes, std::uint8_t options) {
    ManifestContext manifest;
    manifest.codecs = "pxhe.08.02,mp4a.40.2";
    Status status = Status::kOk;
    auto demuxer = fmp4demux_create(
        output_folder(), "in", "init", (options & kAsPlaylist) != 0 ? &manifest : nullptr, nullptr,
        "00112233445566778899aabbccddeeff", nullptr, &status, nullptr, kAllTracks);
    InputFile file;
    open_input(bytes, file);
    if ((options & kByIndex) != 0) {
        static_cast<void>(fmp4demux_with_sidx(file, nullptr, demuxer.get(), nullptr));
    } else {
        static_cast<void>(fmp4demux(&file, nullptr, demuxer.get(), nullptr));
    }
    // The same bytes as the next segment.
    static_cast<void>(Rewind(file));
    SegmentSlot slot;
    slot.kind = kSlotMedia;
    static_cast<void>(fmp4demux(&file, &slot, demuxer.get(), nullptr));
    static_cast<void>(CloseFile(file));
    static_cast<void>(fmp4demux_destroy(std::move(demuxer)));
}

}  // namespace
}  // namespace mediasplit

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0) {
        mediasplit::run({data, size - 1}, data[size - 1]);
    }
    return 0;
}
