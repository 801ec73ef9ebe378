// A whole transport stream through the demultiplexer, output files left out. The first byte
// chooses the container rules; bytes are grouped into packets whose sync byte is put right, so that
// a mutation changes what packets say and not only where they begin.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <vector>

#include "src/tsTableParse/ts_demux.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace mediasplit;
    constexpr std::size_t kPacket = 188;
    if (size < 2 || size > 400 * kPacket) {
        return 0;
    }
    const std::uint8_t mode = data[0];
    std::vector<std::uint8_t> bytes(data + 1, data + size);
    if ((mode & 1) == 0) {
        for (std::size_t at = 0; at < bytes.size(); at += kPacket) {
            bytes[at] = kTsSyncByte;
        }
    }
    std::FILE* file = std::tmpfile();
    if (file == nullptr || std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size()) {
        return 0;
    }
    std::rewind(file);
    InputFile input;
    ManifestContext manifest;
    manifest.codecs = "avc1.640028,ec-3,mp4a.40.2";
    manifest.channels_text = "6";
    manifest.channels_parsed = (mode >> 1) & 1U;
    TsSegmentSummary summary;
    if (ReadFileExt(FileDescriptor(dup(fileno(file))), nullptr, nullptr, 0, "fuzz", input) ==
        Status::kOk) {
        (void)tsdemux(input, "", "fuzz", true, (mode & 4) != 0 ? &manifest : nullptr, &summary,
                      (mode & 8) != 0, nullptr, -1);
    }
    CloseFile(input);
    std::fclose(file);
    return 0;
}
