// One segment of packed audio through the demultiplexer, or, by the first byte, a whole elementary
// stream through one of the two readers. The same byte chooses what the playlist tells.
#include <unistd.h>

#include <cstdint>
#include <cstdio>

#include "src/id3demuxer/es_streams.h"
#include "src/id3demuxer/id3demux.h"

namespace {

constexpr unsigned kEac3Stream = 1;
constexpr unsigned kAc4Stream = 2;

mediasplit::Status read_input(unsigned mode, mediasplit::InputFile& input,
                              mediasplit::ManifestContext* context) {
    switch (mode & 3U) {
        case kEac3Stream:
            return mediasplit::parse_es_stream_oap(nullptr, input, context, nullptr);
        case kAc4Stream:
            return mediasplit::parse_es_stream_ac4(nullptr, input, context, nullptr);
        default:
            return mediasplit::id3demux(&input, nullptr, nullptr, "fuzz", true, context, nullptr);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace mediasplit;
    static const bool quiet = std::freopen("/dev/null", "w", stdout) != nullptr;
    (void)quiet;
    if (size < 1 || size > 0x10000) {
        return 0;
    }
    const unsigned mode = data[0];
    std::FILE* file = std::tmpfile();
    if (file == nullptr || std::fwrite(data + 1, 1, size - 1, file) != size - 1) {
        return 0;
    }
    std::rewind(file);
    ManifestContext context;
    context.codecs = "ac-4.02.01.00,ec-3";
    if ((mode & 4U) != 0) {
        context.channels_text = "16/JOC";
    }
    context.channels_parsed = mode >> 3 & 1U;
    context.channels_have_identifier = mode >> 4 & 1U;
    InputFile input;
    if (ReadFileExt(FileDescriptor(dup(fileno(file))), nullptr, nullptr, 0, "fuzz", input) ==
        Status::kOk) {
        (void)read_input(mode, input, (mode & 32U) != 0 ? nullptr : &context);
    }
    CloseFile(input);
    std::fclose(file);
    return 0;
}
