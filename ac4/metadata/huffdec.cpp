#include "ac4/metadata/huffdec.h"

namespace mediasplit {

void huffdec_init(huffdec* decoder) {
    *decoder = {};
}

void huffdec_set_tree(huffdec* decoder, HuffmanTree tree) {
    decoder->tree = tree;
}

void huffdec_set_bitbuf(huffdec* decoder, orv_bitbuf* bitbuf) {
    decoder->bitbuf = bitbuf;
}

std::uint32_t huffdec_read(huffdec* decoder) {
    // Past the end the reader gives zeros, and zeros lead to a leaf in every complete tree.
    std::uint32_t entry = 0;
    do {
        const std::uint32_t column = orv_bitbuf_read(decoder->bitbuf, 2);
        entry = decoder->tree[entry >> 2].entry[column];
    } while ((entry & 1U) == 0);
    if ((entry & 2U) != 0) {
        orv_bitbuf_skip(decoder->bitbuf, -1);
    }
    if (orv_bitbuf_get_bits_left(decoder->bitbuf) < 0) {
        decoder->read_error = true;
        return 0;
    }
    return entry >> 2;
}

bool huffdec_get_read_status(const huffdec* decoder) {
    return decoder->read_error;
}

}  // namespace mediasplit
