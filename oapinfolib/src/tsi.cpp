#include "oapinfolib/src/tsi.h"

#include <algorithm>

#include "oapinfolib/src/fatal.h"
#include "oapinfolib/src/tsc.h"

namespace mediasplit {

namespace {

constexpr FatalSite kSiteStreamType{kSourceTsi, 102};
constexpr FatalSite kSiteNoProgram{kSourceTsi, 126};
constexpr FatalSite kSiteSecondIndependent{kSourceTsi, 144};
constexpr FatalSite kSiteNotFirst{kSourceTsi, 152};
constexpr FatalSite kSiteSecondDependent{kSourceTsi, 214};

constexpr unsigned kLocationMapMask = 0x07FC;  // channels beyond those of the independent frame
constexpr unsigned kLfeMapMask = 0x0003;

int refuse_frame(const char* text, FatalSite site) {
    return refuse(kTsiBadFrame, text, site);
}

int refuse_second_independent() {
    return refuse_frame(
        "Invalid bitstream detected.  Multiple independent frames exist for the same program.",
        kSiteSecondIndependent);
}

// A ninth program of a time slice is refused like a second frame in an occupied slot.
int open_program(Timeslice& current, ProgramRecord*& program) {
    if (current.nprograms >= static_cast<std::int16_t>(kMaxPrograms)) {
        return refuse_second_independent();
    }
    program = &current.program[static_cast<std::size_t>(current.nprograms)];
    ++current.nprograms;
    return program->independent.present != 0 ? refuse_second_independent() : 0;
}

int open_first_program(const TsiFrame& frame, TimesliceState& state, bool& closed,
                       ProgramRecord*& program) {
    int result = tsi_handle_new_ts(frame.compliance_mode, state);
    if (result != 0) {
        return result;
    }
    closed = state.timeslice_count > 1;
    result = open_program(state.current, program);
    if (result != 0) {
        return result;
    }
    const std::uint32_t rate = kSampleRate[frame.info->fscod & 3U];
    if (rate != 0) {
        state.playing_time += static_cast<float>(frame.info->numblks * 256.0 / rate);
    }
    return 0;
}

int open_further_program(const TsiFrame& frame, TimesliceState& state, ProgramRecord*& program) {
    Timeslice& current = state.current;
    const int result = open_program(current, program);
    if (result != 0) {
        return result;
    }
    if (current.program[0].independent.present == 0) {
        return refuse_frame("Invalid bitstream detected.  First independent frame is not I0.",
                            kSiteNotFirst);
    }
    const std::size_t before = (frame.info->substreamid - std::size_t{1}) % kMaxPrograms;
    if (current.program[before].independent.present == 0) {
        print_warning("Invalid bitstream detected.  Indpendent frames are out of order.");
    }
    return 0;
}

void mark_channel(std::size_t position, ProgramRecord& program, SubstreamRecord& record) {
    record.channel_present[position] = 1;
    program.channel_present[position] = 1;
}

void enter_independent(const BitstreamInfo& info, ProgramRecord& program) {
    SubstreamRecord& record = program.independent;
    program.numblks = info.numblks;
    if (record.previous_convsync == kUnset16) {
        record.frames_since_convsync = kUnset16;
    } else if (record.previous_convsync == 1) {
        record.frames_since_convsync = 1;
    } else {
        ++record.frames_since_convsync;
    }
    const auto& channels = kChannelTable[info.acmod & 7U];
    for (std::size_t i = 0; i < info.nfchans && i < channels.size(); ++i) {
        mark_channel(static_cast<std::size_t>(channels[i]), program, record);
    }
    if (info.lfeon != 0) {
        mark_channel(kLfePosition, program, record);
    }
    record.convsync = info.convsync;
}

int enter_dependent(const BitstreamInfo& info, ProgramRecord& program) {
    const std::size_t slot = info.substreamid % kMaxDependents;
    SubstreamRecord& record = program.dependent[slot];
    ++program.num_dependent;
    program.channel_map = static_cast<std::uint16_t>(program.channel_map | info.chanmap);
    if (record.present != 0) {
        return refuse_frame(
            "Invalid bitstream detected.  Multiple dependent frames exist with same substream ID.",
            kSiteSecondDependent);
    }
    if (program.independent.present == 0) {
        print_warning("Invalid bitstream detected.  No I0 frame detected for dependent frame.");
    }
    if (slot > 0 && program.dependent[slot - 1].present == 0) {
        print_warning("Invalid bitstream detected.  Dependent frames are out of order.");
    }
    record.chanmap = info.chanmap;
    for (std::size_t position = 0; position < kChannelPositions; ++position) {
        if ((info.chanmap >> (kChannelPositions - 1 - position) & 1) != 0) {
            mark_channel(position, program, record);
        }
    }
    record.convsync = kUnset16;
    return 0;
}

// Finds the program and slot that a frame belongs to, and enters what its place says there.
int place_independent(const TsiFrame& frame, TimesliceState& state, bool& closed,
                      ProgramRecord*& program, SubstreamRecord*& record) {
    const int result = frame.info->substreamid == 0
                           ? open_first_program(frame, state, closed, program)
                           : open_further_program(frame, state, program);
    if (result == 0 && program != nullptr) {
        enter_independent(*frame.info, *program);
        record = &program->independent;
    }
    return result;
}

int place_dependent(const BitstreamInfo& info, Timeslice& current, ProgramRecord*& program,
                    SubstreamRecord*& record) {
    if (current.nprograms == 0) {
        return refuse_frame(
            "Invalid bitstream detected.  Dependent stream type has no associated independent "
            "frames.",
            kSiteNoProgram);
    }
    program = &current.program[static_cast<std::size_t>(current.nprograms) - 1];
    record = &program->dependent[info.substreamid % kMaxDependents];
    return enter_dependent(info, *program);
}

void store_aux(const TsiFrame& frame, AuxData& aux) {
    aux.bits = frame.aux_bits;
    if (frame.aux_data != nullptr) {
        std::copy_n(frame.aux_data, aux.used_words(), aux.words.begin());
    } else {
        std::fill_n(aux.words.begin(), aux.used_words(), std::uint16_t{0});
    }
}

void fill_record(const TsiFrame& frame, SubstreamRecord& record) {
    const BitstreamInfo& info = *frame.info;
    record.present = 1;
    record.strmtyp = info.strmtyp;
    record.bsid = info.bsid;
    record.substreamid = info.substreamid;
    record.sourcefscod = info.sourcefscod;
    record.acmod = info.acmod;
    record.nfchans = kChannelCount[info.acmod & 7U];
    record.lfeon = info.lfeon;
    record.nchans = info.nchans;
    record.status = frame.status;
    record.numblks = info.numblks;
    record.sample_rate = kSampleRate[info.fscod & 3U];
    record.source_rate =
        static_cast<std::uint16_t>(record.sample_rate * (info.sourcefscod == 1 ? 2 : 1));
    record.frame_words = bsid_frame_words(info);
    record.frame_bytes = record.frame_words * 2;
    const double bits_per_second =
        static_cast<double>(record.sample_rate) * static_cast<double>(record.frame_words) * 16.0;
    record.rate = static_cast<float>(bits_per_second / (info.numblks * 256.0 * 1000.0));
    record.bsi = info;
    store_aux(frame, record.aux);
    record.encinfo_present = frame.encinfo != nullptr ? 1 : 0;
    record.encinfo = frame.encinfo != nullptr ? *frame.encinfo : std::uint16_t{0};
}

void tally_program(const SubstreamRecord& record, ProgramRecord& program) {
    program.num_substreams = program.num_dependent + 1;
    program.coded_channels = static_cast<std::uint16_t>(program.coded_channels + record.nfchans);
    program.coded_lfe = static_cast<std::uint16_t>(program.coded_lfe + record.lfeon);
    const auto locations =
        static_cast<std::uint16_t>(unsigned{program.channel_map} & kLocationMapMask);
    program.total_channels =
        static_cast<std::uint16_t>(program.independent.nfchans + chx_getnumchanexts(locations));
    const auto lfes = static_cast<std::uint16_t>(unsigned{program.channel_map} & kLfeMapMask);
    program.lfe_count =
        chx_getnumchanexts(lfes) == 2 ? std::uint16_t{2} : program.independent.lfeon;
    program.combined_rate += record.rate;
    program.total_words += record.frame_words;
}

// The mean runs in double precision: a constant rate has to stay exact over millions of time
// slices.
void update_data_rate(TimesliceState& state) {
    double sum = 0;
    for (int i = 0; i < state.current.nprograms; ++i) {
        sum +=
            static_cast<double>(state.current.program[static_cast<std::size_t>(i)].combined_rate);
    }
    const auto count = static_cast<double>(std::max<std::int64_t>(state.timeslice_count, 1));
    const double before = (count - 1) * static_cast<double>(state.previous_data_rate);
    state.data_rate = static_cast<float>((before + sum) / count);
}

}  // namespace

void tsi_sysinit(TimesliceState& state) {
    state.timeslice_count = 0;
    state.frame_count = 0;
    state.playing_time = 0;
    state.data_rate = 0;
    state.previous_data_rate = 0;
    state.status = kStatusGood;
    state.failures = ComplianceBlock{};
    for (Timeslice* timeslice : {&state.current, &state.previous}) {
        reset_timeslice(*timeslice);
        SubstreamRecord& first = timeslice->program[0].independent;
        first.previous_convsync = kUnset16;
        first.frames_since_convsync = kUnset16;
    }
}

int tsi_handle_new_ts(int compliance_mode, TimesliceState& state) {
    const bool first = state.timeslice_count == 1;
    const bool changed =
        state.timeslice_count > 1 && !tsi_compare_ts(state.current, state.previous);
    if (first || changed) {
        tsc_tsinit(state.current.compliance);
        int result = tsc_chkts(compliance_mode, state.current, state.failures);
        if (result == 0) {
            result = tsc_chkprg(compliance_mode, false, first ? state.current : state.previous,
                                state.current, state.failures);
        }
        if (result != 0) {
            return result;
        }
        copy_timeslice(state.current, state.previous);
    }
    tsi_tsinit(state.current);
    state.previous_data_rate = state.data_rate;
    ++state.timeslice_count;
    return 0;
}

int tsi_procframe(const TsiFrame& frame, TimesliceState& state, bool& closed) {
    closed = false;
    const BitstreamInfo& info = *frame.info;
    if (info.strmtyp >= 3) {
        return refuse_frame("Invalid bitstream detected.  Streamtype is not supported.",
                            kSiteStreamType);
    }
    ProgramRecord* program = nullptr;
    SubstreamRecord* record = nullptr;
    int result = info.strmtyp == 1 ? place_dependent(info, state.current, program, record)
                                   : place_independent(frame, state, closed, program, record);
    if (result != 0 || program == nullptr || record == nullptr) {
        return result;
    }
    fill_record(frame, *record);
    tally_program(*record, *program);
    result = tsi_determinestatus(frame.status, program->status);
    if (result != 0) {
        return result;
    }
    ++state.frame_count;
    update_data_rate(state);
    return tsi_determinestatus(frame.status, state.status);
}

int tsi_flush(int compliance_mode, TimesliceState& state) {
    tsc_tsinit(state.current.compliance);
    int result = tsc_chkts(compliance_mode, state.current, state.failures);
    if (result == 0 && state.timeslice_count >= 2) {
        result = tsc_chkprg(compliance_mode, true, state.previous, state.current, state.failures);
    }
    if (result == 0) {
        copy_timeslice(state.current, state.previous);
    }
    return result;
}

int tsi_determinestatus(FrameStatus status, FrameStatus& aggregate) {
    if (status == kStatusUnknown || aggregate == kStatusUnknown) {
        aggregate = kStatusUnknown;
    } else if (status == kStatusFullError || aggregate == kStatusFullError) {
        aggregate = kStatusFullError;
    } else if (status == kStatusPartialError || aggregate == kStatusPartialError) {
        aggregate = kStatusPartialError;
    } else if (status != kStatusGood || aggregate != kStatusGood) {
        aggregate = kStatusUnknown;
        return kTsiBadFrame;
    }
    return 0;
}

}  // namespace mediasplit
