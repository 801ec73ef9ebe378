// Scaling lists of ITU-T H.265 7.3.4.
#include <algorithm>

#include "src/video/bit_cursor.h"
#include "src/video/hevc_parameter_sets.h"

namespace mediasplit {
namespace {

// Lists of each size id: 4 x 4, 8 x 8, 16 x 16 and 32 x 32.
constexpr std::array<std::uint32_t, 4> kListsOfSize = {6, 6, 6, 2};
constexpr std::uint32_t kDefaultDc = 16;

constexpr std::array<std::uint8_t, 16> kFlat4x4 = {16, 16, 16, 16, 16, 16, 16, 16,
                                                   16, 16, 16, 16, 16, 16, 16, 16};

constexpr std::array<std::uint8_t, 64> kIntra8x8 = {
    16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 17, 16, 17, 16, 17, 18, 17, 18, 18, 17, 18, 21,
    19, 20, 21, 20, 19, 21, 24, 22, 22, 24, 24, 22, 22, 24, 25, 25, 27, 30, 27, 25, 25, 29,
    31, 35, 35, 31, 29, 36, 41, 44, 41, 36, 47, 54, 54, 47, 65, 70, 65, 88, 88, 115};

constexpr std::array<std::uint8_t, 64> kInter8x8 = {
    16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 17, 17, 17, 17, 17, 18, 18, 18, 18, 18, 18, 20,
    20, 20, 20, 20, 20, 20, 24, 24, 24, 24, 24, 24, 24, 24, 25, 25, 25, 25, 25, 25, 25, 28,
    28, 28, 28, 28, 28, 33, 33, 33, 33, 33, 41, 41, 41, 41, 54, 54, 54, 71, 71, 91};

// A list that repeats another one: the one `delta` before it, or the default for a delta of 0 (and
// for a delta that reaches behind the first list).
void copy_reference(std::vector<HevcScalingMatrix>& matrices, std::uint32_t size_id,
                    std::uint32_t matrix_id, std::uint32_t delta) {
    HevcScalingMatrix& matrix = matrices.back();
    if (delta == 0 || delta > matrix_id) {
        const ByteSpan list = scaling_list_default_address(size_id, matrix_id);
        std::copy(list.begin(), list.end(), matrix.coefficients.begin());
        matrix.dc_coef = kDefaultDc;
        return;
    }
    const HevcScalingMatrix& reference = matrices[matrices.size() - 1 - delta];
    matrix.coefficients = reference.coefficients;
    matrix.dc_coef = reference.dc_coef;
}

void read_coefficients(HevcScalingMatrix& matrix, std::uint32_t size_id, BitCursor& bits) {
    std::uint32_t next = 8;
    if (size_id > 1) {
        next += static_cast<std::uint32_t>(bits.se());
        matrix.dc_coef = static_cast<std::int32_t>(next);
    }
    const std::size_t count = std::min<std::size_t>(64, std::size_t{16} << (2 * size_id));
    for (std::size_t i = 0; i < count; ++i) {
        next = (next + static_cast<std::uint32_t>(bits.se())) & 255U;
        matrix.coefficients[i] = static_cast<std::uint8_t>(next);
    }
}

}  // namespace

ByteSpan scaling_list_default_address(std::uint32_t size_id, std::uint32_t matrix_id) {
    if (size_id == 0) {
        return kFlat4x4;
    }
    const std::uint32_t intra_lists = size_id == 3 ? 1 : 3;
    return matrix_id < intra_lists ? kIntra8x8 : kInter8x8;
}

Status parse_hevc_scaling_list(HevcScalingList* list, ByteSpan data, std::uint32_t& position) {
    if (list == nullptr || data.data() == nullptr) {
        return Status::kFailed;
    }
    BitCursor bits(data, position);
    list->matrices.clear();
    for (std::uint32_t size_id = 0; size_id < kListsOfSize.size(); ++size_id) {
        for (std::uint32_t matrix_id = 0; matrix_id < kListsOfSize[size_id]; ++matrix_id) {
            HevcScalingMatrix& matrix = list->matrices.emplace_back();
            matrix.scaling_list_pred_mode_flag = bits.flag();
            if (matrix.scaling_list_pred_mode_flag != 0) {
                read_coefficients(matrix, size_id, bits);
            } else {
                matrix.scaling_list_pred_matrix_id_delta = bits.ue();
                copy_reference(list->matrices, size_id, matrix_id,
                               matrix.scaling_list_pred_matrix_id_delta);
            }
        }
    }
    return Status::kOk;
}

}  // namespace mediasplit
