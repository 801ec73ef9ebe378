// The "dec3" box against the bitstream.
#include "src/audio/ec3_extension.h"
#include "src/fmp4demuxer/checks/audio_entry.h"
#include "src/fmp4demuxer/source_name.h"
#include "src/log/logging.h"
#include "src/util/bit_reader.h"

namespace mediasplit {

namespace {

constexpr int kMissingLine = 212;

// `chan_loc` of the box for a `chanmap` of the bitstream: the same locations from the other end.
std::uint32_t location_bits(std::uint32_t chanmap) {
    const std::uint32_t reversed = reverse_bits(chanmap) >> 16;
    return (reversed >> 6 & 0x100) | (reversed >> 5 & 0xFF);
}

Status check_program(std::uint32_t index, const OapProgramInfo& stream, const Ec3Substream& box,
                     Loglist* loglist) {
    Status status = check(stream.num_dependent == box.num_dep_sub, loglist, 4305, {}, index,
                          stream.num_dependent, box.num_dep_sub);
    status |= check(stream.bsid == box.bsid, loglist, 4306, {}, index, stream.bsid, box.bsid);
    status |= check(stream.bsmod == box.bsmod, loglist, 4307, {}, index, stream.bsmod, box.bsmod);
    status |= check(stream.fscod == box.fscod, loglist, 4308, {}, index, stream.fscod, box.fscod);
    status |= check(stream.acmod == box.acmod, loglist, 4309, {}, index, stream.acmod, box.acmod);
    status |= check(stream.lfeon == box.lfeon, loglist, 4310, {}, index, stream.lfeon, box.lfeon);
    for (std::uint32_t i = 0; i < stream.num_dependent; ++i) {
        const std::uint32_t expected = location_bits(stream.dependent[i].chanmap);
        status |= check(expected == box.chan_loc, loglist, 4311, {}, index, expected, box.chan_loc);
    }
    return status;
}

Status check_extension_bytes(const OapEsInfo& info, const Ec3Config& config, Loglist* loglist) {
    const bool has_substream = info.num_programs != 0;
    Status status = check(has_substream, loglist, 4312, {});
    if (!has_substream) {
        return status;
    }
    const AdditionalBsi bsi = extension_of(info.program[0]);
    const std::uint32_t flag = config.flag_ec3_extension_type_a;
    if (flag == 0) {
        return check(bsi.bytes[0] == 0 || bsi.length == 0, loglist, 4316, {});
    }
    const bool has_extension = bsi.exists && bsi.length > 1;
    status |= check(has_extension, loglist, 4313, {});
    if (has_extension) {
        const std::uint32_t complexity = config.complexity_index_type_a;
        status |= check(bsi.bytes[0] == flag, loglist, 4314, {}, bsi.bytes[0], flag);
        status |= check(bsi.bytes[1] == complexity, loglist, 4315, {}, bsi.bytes[1], complexity);
    }
    return status;
}

}  // namespace

Status oap_es_info_validate(const OapEsInfo* info, const Ec3Config* config, bool check_extension,
                            Loglist* loglist) {
    if (info == nullptr || config == nullptr) {
        return Logging_err_type_check(loglist, 3006, {}, kDriverSourceName, kMissingLine);
    }
    Status status = check(info->byte_swapped == 0, loglist, 2040, {});
    const bool is_one_unit = info->framesets == 1 && info->remainder_blocks == 0;
    status |= check(is_one_unit, loglist, 4293, {});
    status |= check(info->data_rate == config->ec3_datarate, loglist, 4303, {}, info->data_rate,
                    config->ec3_datarate);
    status |= check(info->num_programs == config->ec3_ind_sub_stream_count, loglist, 4304, {},
                    info->num_programs, config->ec3_ind_sub_stream_count);
    for (std::uint32_t i = 0; i < info->num_programs; ++i) {
        status |= check_program(i, info->program[i], config->substreams[i], loglist);
    }
    return check_extension ? status | check_extension_bytes(*info, *config, loglist) : status;
}

}  // namespace mediasplit
