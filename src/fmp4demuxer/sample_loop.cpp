#include "src/fmp4demuxer/sample_loop.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "src/fmp4demuxer/checks/ac4_stream.h"
#include "src/fmp4demuxer/checks/ec3_stream.h"
#include "src/fmp4demuxer/sample_decryption.h"
#include "src/fmp4demuxer/track_driver.h"
#include "src/fmp4demuxer/writers/sample_writers.h"
#include "src/fmp4demuxer/writers/unit_output.h"
#include "src/log/logging.h"
#include "src/mp4demuxer/mp4demuxer.h"

namespace mediasplit {
namespace {

// Of the walk's budget of this many times a file's bytes, each sample takes as much as a byte has
// at the least: samples that aren't placed over one another have a byte each.
constexpr std::uint64_t kMostReadings = 64;
constexpr std::uint64_t kLeastCost = kMostReadings;

// What a broken sample prints, about: two lines of a unit, or the lines of an E-AC-3 frame's rules.
constexpr std::uint64_t kReportedBytes = 200;
constexpr std::uint64_t kReportedEac3Bytes = 1500;

// Holds the sample under way: at first 1 MiB, then as much as the largest sample.
class SampleBuffer {
public:
    std::span<std::uint8_t> get(std::uint64_t size) {
        if (size > capacity_) {
            capacity_ = std::max(size, kInputBlockSize);
            bytes_.reset();  // before the larger one is taken
            // Not make_unique: the bytes are read over, there is no use in clearing them.
            bytes_.reset(new std::uint8_t[capacity_]);  // NOLINT(modernize-make-unique)
        }
        return {bytes_.get(), size};
    }

private:
    std::unique_ptr<std::uint8_t[]> bytes_;
    std::uint64_t capacity_ = 0;
};

class SampleWalk {
public:
    SampleWalk(Mp4Demuxer& demuxer, InputFile& file, std::unique_ptr<SegmentTiming>* timing)
        : demuxer_(demuxer), file_(file), timing_(timing), current_(demuxer.streams.size()) {
        const std::int64_t size = FileSize(file);
        file_size_ =
            size < 0 ? std::numeric_limits<std::int64_t>::max() : static_cast<std::uint64_t>(size);
        // Tables may place samples over one another. A walk that comes to this many times a file's
        // bytes serves no track any more; it would only fill the disk.
        budget_ = file_size_ > std::numeric_limits<std::int64_t>::max() / kMostReadings
                      ? std::numeric_limits<std::uint64_t>::max()
                      : file_size_ * kMostReadings + kInputBlockSize;
    }

    Status run() {
        Status status = Status::kOk;
        for (std::uint32_t index = 0; index < demuxer_.streams.size(); ++index) {
            if (is_selected(demuxer_, *demuxer_.streams[index])) {
                queue_next_sample(index);
            }
        }
        while (!queue_.empty()) {
            std::pop_heap(queue_.begin(), queue_.end(), comes_later);
            const std::uint32_t index = queue_.back().stream_index;
            queue_.pop_back();
            status |= take_sample(current_[index]);
            queue_next_sample(index);
        }
        return status;
    }

private:
    // The next sample of a track.
    struct Candidate {
        std::uint64_t offset;
        std::uint32_t stream_index;
    };

    static bool comes_later(const Candidate& left, const Candidate& right) {
        return left.offset != right.offset ? left.offset > right.offset
                                           : left.stream_index > right.stream_index;
    }

    void queue_next_sample(std::uint32_t index) {
        Mp4Sample& sample = current_[index];
        if (mp4demuxer_get_sample(demuxer_, index, demuxer_.streams[index]->next_sample, sample) ==
                nullptr ||
            (sample.size != 0 && sample.offset >= file_size_)) {
            return;
        }
        if (budget_ == 0) {
            note_remark(
                "Samples were dropped: those before them came to more than 64 times the size of "
                "their file.");
            return;
        }
        queue_.push_back({sample.offset, index});
        std::push_heap(queue_.begin(), queue_.end(), comes_later);
    }

    Status take_sample(const Mp4Sample& sample) {
        Mp4Stream& stream = *demuxer_.streams[sample.stream_index];
        Status status = Status::kOk;
        ++stream.next_sample;
        if (stream.next_sample == 1) {
            if (sample.stream_id == kStreamIdAc4) {
                status |= check(sample.sync != 0, demuxer_.loglist, 4485, {});
            }
            note_timing(stream, sample);
        }
        const auto bytes = read(stream, sample);
        if (bytes.empty() && sample.size != 0) {
            // Its byte range ends ahead of it: the header of a frame alone would break the stream.
            return status;
        }
        return status | write_within_budget(sample, bytes);
    }

    void spend(std::uint64_t bytes) { budget_ -= std::min(budget_, bytes); }

    void note_timing(const Mp4Stream& stream, const Mp4Sample& sample) {
        if (timing_ == nullptr) {
            return;
        }
        auto record = std::make_unique<SegmentTiming>();
        if (stream.time_scale != 0) {
            record->duration =
                static_cast<double>(stream.duration) / static_cast<double>(stream.time_scale);
            record->sample_duration = static_cast<float>(stream.default_sample_duration) /
                                      static_cast<float>(stream.time_scale);
        }
        record->is_last_kind = sample.sync;
        *timing_ = std::move(record);
    }

    // The sample's bytes in the clear, as many as the file has.
    std::span<const std::uint8_t> read(const Mp4Stream& stream, const Mp4Sample& sample) {
        const std::uint64_t here = CurrentOffset(file_);
        if (sample.size == 0 || sample.offset >= file_size_ ||
            (here != sample.offset &&
             SeekBytes(static_cast<std::int64_t>(sample.offset - here), file_) != Status::kOk)) {
            return {};
        }
        const std::uint64_t size = std::min<std::uint64_t>(sample.size, file_size_ - sample.offset);
        spend(std::max(size, kLeastCost));
        const bool encrypted = needs_decryption(demuxer_, stream);
        if (!encrypted) {
            if (const auto view = read_view(size, file_); !view.empty()) {
                return view;
            }
        }
        const std::span<std::uint8_t> bytes = read_into_buffer(size);
        if (encrypted) {
            decrypt_sample(demuxer_, stream, sample.senc, bytes);
            remark_on_decrypted(stream, bytes);
        }
        return bytes;
    }

    std::span<std::uint8_t> read_into_buffer(std::uint64_t size) {
        const std::span<std::uint8_t> bytes = buffer_.get(size);
        // A request of exactly one input block could be passed over; two smaller ones are not.
        const std::uint64_t first = size == kInputBlockSize ? size / 2 : size;
        std::uint64_t got = ReadBytes(bytes.data(), first, file_);
        if (got == first && first < size) {
            got += ReadBytes(bytes.data() + first, size - first, file_);
        }
        return bytes.first(got);
    }

    // What a sample brings along counts as well: parameter sets go in at each IDR picture, however
    // small that is, and a broken one gets its lines on the error stream.
    Status write_within_budget(const Mp4Sample& sample, std::span<const std::uint8_t> bytes) {
        const OutputFile* file = output_of(demuxer_, sample.stream_index);
        const std::uint64_t before = file != nullptr ? file->bytes_written() : 0;
        const Status status = write(sample, bytes);
        const std::uint64_t written = file != nullptr ? file->bytes_written() - before : 0;
        spend(written - std::min<std::uint64_t>(written, bytes.size()));
        if (status != Status::kOk) {
            spend(sample.stream_id == kStreamIdEc3 ? kReportedEac3Bytes : kReportedBytes);
        }
        return status;
    }

    Status write(const Mp4Sample& sample, std::span<const std::uint8_t> bytes) {
        const std::uint32_t index = sample.stream_index;
        switch (sample.stream_id) {
            case kStreamIdAac:
                return aacSample(demuxer_, index, bytes);
            case kStreamIdAvc1:
            case kStreamIdAvc3:
                return avcSample(demuxer_, index, bytes);
            case kStreamIdEc3:
                return ec3Sample(demuxer_, index, bytes);
            case kStreamIdHev1:
            case kStreamIdHvc1:
                return hevcSample(demuxer_, index, bytes);
            case kStreamIdAc4:
                return ac4Sample(demuxer_, index, bytes, demuxer_.streams[index]->next_sample,
                                 sample.sync);
            case kStreamIdAv01:
            case kStreamIdAv01Other:
                return av1Sample(demuxer_, index, bytes);
            default:
                return unspecifiedSample(demuxer_, index, bytes);
        }
    }

    Mp4Demuxer& demuxer_;
    InputFile& file_;
    std::unique_ptr<SegmentTiming>* timing_;
    std::vector<Mp4Sample> current_;  // of each track, the sample in the queue
    std::vector<Candidate> queue_;    // heap, lowest offset first
    SampleBuffer buffer_;
    std::uint64_t file_size_ = 0;
    std::uint64_t budget_ = 0;  // bytes that may still be read, or written beside those
};

}  // namespace

Status walk_samples(Mp4Demuxer& demuxer, InputFile& file, std::unique_ptr<SegmentTiming>* timing) {
    Status status = SampleWalk(demuxer, file, timing).run();
    for (std::uint32_t index = 0; index < demuxer.streams.size(); ++index) {
        end_ec3_stream(*demuxer.streams[index]);
        status |= end_ac4_stream(demuxer, index);
        status |= end_av1_stream(demuxer, index);
    }
    return status;
}

}  // namespace mediasplit
