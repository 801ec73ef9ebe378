#include "oapinfolib/src/oapinfo_api.h"

#include <algorithm>
#include <new>
#include <utility>

#include "oapinfolib/src/disp.h"
#include "oapinfolib/src/fatal.h"
#include "oapinfolib/src/oap_parser_state.h"

namespace mediasplit {

namespace {

constexpr FatalSite kSiteNoState{kSourceOapinfoApi, 129};
constexpr FatalSite kSiteNoDit{kSourceOapinfoApi, 146};
constexpr FatalSite kSiteNoFrame{kSourceOapinfoApi, 161};
constexpr FatalSite kSiteIncomplete{kSourceOapinfoApi, 313};
constexpr FatalSite kSiteDit{kSourceOapinfoApi, 339};

constexpr std::int64_t kSizeWords = 3;  // words that a frame's size is read from
constexpr std::uint64_t kFramesetBlocks = 6;

const OapEsInfo kEmptyInfo{};

static_assert(sizeof(OapProgramInfo) == 940 && sizeof(OapEsInfo) == 7560);

// Makes a record, or gives null with the fatal text of `site`. This is the one place that takes
// memory.
template <typename Record>
std::unique_ptr<Record> make_record(FatalSite site) {
    std::unique_ptr<Record> record(new (std::nothrow) Record);
    if (record == nullptr) {
        print_fatal("Cannot allocate the necessary memory", site);
    }
    return record;
}

// How the walk over the frames of a block goes on.
enum class Step { kNext, kEndOfBlock, kReturn };

struct Walk {
    OapParserState& state;
    const std::uint8_t* source;
    bool byte_swapped = false;
    int result = kOapGood;  // with Step::kReturn
};

Step stop(Walk& walk, int result) {
    walk.result = result;
    return Step::kReturn;
}

TsiFrame describe_frame(const OapParserState& state) {
    TsiFrame frame;
    frame.info = &state.frame->info;
    frame.status = state.frame_status;
    frame.compliance_mode = state.compliance_mode;
    frame.aux_bits = state.aux_bits;
    frame.aux_data = state.aux_data;
    frame.encinfo = state.encinfo;
    return frame;
}

std::int64_t count_failures(const ComplianceBlock& block) {
    return std::count(block.results.begin(), block.results.end(), Verdict::kFailure);
}

// Rows of failures come at each change and at the end of each call, so that small blocks could ask
// for any number of lines.
void spend_on_report(OapParserState& state, std::int64_t rows) {
    constexpr std::int64_t kRowBytes = 100;
    state.report_left -= kRowBytes * rows;
    if (state.report_left < 0 && state.disp_flags != 0) {
        state.disp_flags = 0;
        print_warning("Further compliance lines of this stream are left out");
    }
}

int print_timeslice(OapParserState& state, std::int64_t number, bool final_slice) {
    const ComplianceBlock& shown = state.shadow.compliance;
    const std::int64_t rows = shown.any_failure != 0 ? count_failures(shown) : 0;
    const std::int64_t printed_before = std::exchange(state.last_printed, -1);
    const int result = disp_printtsinfo(state.disp_flags, number, state.last_printed,
                                        state.last->previous, state.shadow, final_slice);
    if (state.last_printed < 0) {
        state.last_printed = printed_before;
    } else {
        spend_on_report(state, rows);
    }
    return result;
}

// Copies the next frame into the frame buffer.
Step load_frame(Walk& walk) {
    OapParserState& state = walk.state;
    FileBuffer& file = state.file;
    if (detectbyteorder(walk.source, file) != 0) {
        return stop(walk, kOapUnreadable);
    }
    walk.byte_swapped = walk.byte_swapped || file.byte_order == kOrderWords;
    if (readfilein(kSizeWords, 0, walk.source, file) != 0) {
        return stop(walk, kOapUnreadable);
    }
    state.descriptor.valid_words = kSizeWords;
    if (file.eof) {
        return Step::kEndOfBlock;
    }
    if (oapi_fmi_openframe(*state.frame, state.descriptor, state.frame_words) != 0 ||
        readfilein(state.frame_words - kSizeWords, kSizeWords, walk.source + 2 * kSizeWords,
                   file) != 0) {
        return stop(walk, kOapUnreadable);
    }
    state.descriptor.valid_words = state.frame_words;
    if (file.eof) {
        print_fatal("Incomplete frame", kSiteIncomplete);
        return stop(walk, state.last_compliance != 0 ? kOapCompliance : kOapGood);
    }
    walk.source += std::ptrdiff_t{state.frame_words} * 2;
    return Step::kNext;
}

// Hands the frame in the buffer to the time slice analysis.
Step analyse_frame(Walk& walk) {
    OapParserState& state = walk.state;
    // A frame with a CRC error in all of it ends the block here.
    if (oapi_fmi_getframeparam(*state.frame, state.descriptor, kGroupFrame, state.scratch,
                               state.frame_status) != 0) {
        return stop(walk, kOapUnreadable);
    }
    if (oapi_dit_processframe(*state.dit, describe_frame(state), state.flush) != 0) {
        print_fatal("Processing error in DIT subroutine", kSiteDit);
        return stop(walk, kOapUnreadable);
    }
    if (state.flush.closed) {
        state.last = state.flush.timeslices;
        const int result = print_timeslice(state, state.last->timeslice_count - 2, false);
        if (result > 0) {
            return stop(walk, result);
        }
        if (state.stop_at_first_failure && state.last->failures.any_failure != 0) {
            return Step::kEndOfBlock;
        }
    }
    ++state.file.frames_done;
    state.file.bytes_done += std::int64_t{state.frame_words} * 2;
    return oapi_fmi_closeframe(*state.frame) != 0 ? stop(walk, kOapUnreadable) : Step::kNext;
}

Step walk_frames(Walk& walk) {
    Step step = Step::kNext;
    while (step == Step::kNext) {
        walk.state.aux_data = nullptr;
        walk.state.encinfo = nullptr;
        walk.state.aux_bits = 0;
        step = load_frame(walk);
        if (step == Step::kNext) {
            step = analyse_frame(walk);
        }
    }
    return step;
}

// The fields that a program and a dependent substream have in common.
template <typename Target>
void fill_substream(const SubstreamRecord& record, Target& target) {
    const BitstreamInfo& info = record.bsi;
    target.bsid = info.bsid;
    target.bsmod = info.bsmod;
    target.fscod = info.fscod;
    target.acmod = info.acmod;
    target.lfeon = info.lfeon;
    target.chanmap = info.chanmap;
    target.strmtyp = info.strmtyp;
    target.substreamid = info.substreamid;
    target.addbsie = info.addbsie;
    if (info.addbsie != 0) {
        target.addbsi_len = info.addbsil + 1U;
        std::copy_n(info.addbsi.begin(),
                    std::min<std::size_t>(target.addbsi_len, target.addbsi.size()),
                    target.addbsi.begin());
    }
}

void fill_program(const ProgramRecord& record, OapProgramInfo& program) {
    // Ids that come again over many refused blocks count as well.
    program.num_dependent = std::min<std::uint32_t>(record.num_dependent, kOapMaxDependents);
    fill_substream(record.independent, program);
    for (std::size_t i = 0; i < program.num_dependent; ++i) {
        fill_substream(record.dependent[i], program.dependent[i]);
    }
}

// A rate as a whole number; one that makes no sense gives 0.
std::uint32_t whole_rate(float rate) {
    return rate >= 0 && rate < 4294967040.0F ? static_cast<std::uint32_t>(rate) : 0;
}

void fill_info(const TimesliceState& timeslices, std::int64_t count_before, bool byte_swapped,
               OapEsInfo& info) {
    info = kEmptyInfo;
    const Timeslice& last = timeslices.previous;
    const auto added = static_cast<std::uint64_t>(timeslices.timeslice_count - count_before);
    const std::uint64_t blocks = last.program[0].independent.numblks * added;
    info.byte_swapped = byte_swapped ? 1 : 0;
    info.remainder_blocks = static_cast<std::uint32_t>(blocks % kFramesetBlocks);
    info.data_rate = whole_rate(timeslices.data_rate);
    info.framesets = static_cast<std::uint32_t>(blocks / kFramesetBlocks);
    info.num_programs =
        static_cast<std::uint32_t>(std::min(programs_in_use(last), kOapMaxPrograms));
    for (std::size_t i = 0; i < info.num_programs; ++i) {
        fill_program(last.program[i], info.program[i]);
    }
}

int print_end(OapParserState& state) {
    const std::int64_t count = state.last->timeslice_count;
    int result = print_timeslice(state, count - 1, false);
    if (result <= 0) {
        result = print_timeslice(state, count, true);
    }
    if (result <= 0) {
        result = disp_printfilesummary(state.disp_flags, *state.last);
        spend_on_report(state, count_failures(state.last->failures));
    }
    return result;
}

}  // namespace

void OapParserDeleter::operator()(OapParserState* state) const {
    const std::unique_ptr<OapParserState> owner(state);
}

OapParser oap_es_parser_new(std::uint32_t flag) {
    std::unique_ptr<OapParserState> state = make_record<OapParserState>(kSiteNoState);
    if (state == nullptr) {
        return nullptr;
    }
    state->dit = make_record<DitState>(kSiteNoDit);
    if (state->dit == nullptr) {
        return nullptr;
    }
    state->frame = make_record<FrameHandle>(kSiteNoFrame);
    if (state->frame == nullptr) {
        return nullptr;
    }
    oapi_dit_open(*state->dit);
    state->display_word = flag != 0 ? 2 : 0;
    return OapParser(state.release());
}

int oap_es_parser(const std::uint8_t* data, std::uint32_t size, OapParserState* state,
                  OapEsInfo* info) {
    if (state == nullptr || info == nullptr || (data == nullptr && size != 0)) {
        return kOapUnreadable;
    }
    openfilebufs(size, state->file);
    initbufdescriptors(state->file, state->descriptor);
    state->report_left += kReportShare * size;
    // Time slices of earlier calls count as this call's while no report has stood yet. That is
    // deliberate: a sample that failed in its first frame is made up for by the next one.
    const std::int64_t count_before = state->last != nullptr ? state->last->timeslice_count : 0;
    Walk walk{*state, data};
    if (walk_frames(walk) == Step::kReturn) {
        return walk.result;
    }
    int result = oapi_dit_flush(*state->dit, describe_frame(*state), state->flush);
    if (result > 0) {
        return result;
    }
    state->last = state->flush.timeslices;
    fill_info(*state->last, count_before, walk.byte_swapped, *info);
    state->last_compliance = state->last->failures.any_failure;
    result = print_end(*state);
    closefilebufs();
    if (result != 0) {
        return result > 0 ? result : kOapUnreadable;
    }
    return state->last_compliance != 0 ? kOapCompliance : kOapGood;
}

int oap_es_parser_delete(OapParser& state) {
    if (state == nullptr) {
        return kOapUnreadable;
    }
    state.reset();
    return 0;
}

}  // namespace mediasplit
