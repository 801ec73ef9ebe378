#include "tests/support/mp4_input.h"

#include <sys/mman.h>
#include <unistd.h>

namespace mediasplit::mp4 {

MemoryInput::MemoryInput(std::span<const std::uint8_t> bytes) {
    const int descriptor = memfd_create("input", 0);
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = write(descriptor, bytes.data() + done, bytes.size() - done);
        if (count <= 0) {
            break;
        }
        done += static_cast<std::size_t>(count);
    }
    lseek(descriptor, 0, SEEK_SET);
    static_cast<void>(
        ReadFileExt(FileDescriptor(descriptor), nullptr, nullptr, 0, "memory.mp4", file_));
}

MemoryInput::~MemoryInput() {
    static_cast<void>(CloseFile(file_));
}

std::unique_ptr<Mp4Demuxer> walk(std::span<const std::uint8_t> bytes) {
    std::unique_ptr<Mp4Demuxer> demuxer = mp4demuxer_create();
    walk_again(*demuxer, bytes);
    return demuxer;
}

void walk_again(Mp4Demuxer& demuxer, std::span<const std::uint8_t> bytes) {
    MemoryInput input(bytes);
    mp4demuxer_update(&demuxer, 0, 0);
    mp4demuxer_parse_boxes(demuxer, input.file());
}

}  // namespace mediasplit::mp4
