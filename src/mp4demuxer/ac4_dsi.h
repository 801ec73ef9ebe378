// AC-4 decoder specific information of the `dac4` box (ETSI TS 103 190-2 E.6).
#pragma once

#include <cstdint>
#include <span>

namespace mediasplit {

struct Ezxml;

// What a `dac4` payload says. Nothing is read from it yet.
struct DsiRecord {};

// Reads a `dac4` payload into `record`, and into the optional tree. Returns 0, or an error that the
// box handler passes on. Not built yet: the payload is accepted and nothing is taken from it.
std::uint32_t ac4_dsi_parser(std::span<const std::uint8_t> payload, DsiRecord& record, Ezxml* tree);

}  // namespace mediasplit
