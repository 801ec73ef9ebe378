// AES decryption state of one demultiplexer, over mbed TLS.
#pragma once

#include <mbedtls/aes.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "src/log/status.h"

namespace mediasplit {

inline constexpr std::size_t kAesBlockSize = 16;

// Block chaining of a context.
inline constexpr std::uint32_t kDecryptModeCbc = 0;
inline constexpr std::uint32_t kDecryptModeCtr = 1;

// Key, mode and running counter or chain value. It belongs to one thread.
struct DecryptContext {
    DecryptContext() { mbedtls_aes_init(&aes); }
    DecryptContext(const DecryptContext&) = delete;
    DecryptContext& operator=(const DecryptContext&) = delete;
    ~DecryptContext() { mbedtls_aes_free(&aes); }

    // The mode's operation: `length` bytes from `input` to `output`, which may be the same place.
    Status (*crypt)(DecryptContext& context, std::size_t length, const std::uint8_t* input,
                    std::uint8_t* output) = nullptr;
    std::array<std::uint8_t, kAesBlockSize> iv{};
    std::uint32_t mode = kDecryptModeCbc;
    mbedtls_aes_context aes;
};

// Makes a context for AES with a key of 16, 24 or 32 bytes. Without `iv` (null) the start value is
// zeros; of an `iv` over 16 bytes the first 16 count. Null for a key of another size or for a mode
// that is neither of the two.
[[nodiscard]] std::unique_ptr<DecryptContext> decrypt_aes_create(std::uint32_t mode,
                                                                 const std::uint8_t* key,
                                                                 std::size_t key_size,
                                                                 const std::uint8_t* iv,
                                                                 std::size_t iv_size);

// Sets the counter or chain value to `iv`, filled up with zeros. A null context is accepted.
Status decrypt_update_iv(DecryptContext* context, const std::uint8_t* iv, std::size_t iv_size);

void decrypt_aes_destroy(std::unique_ptr<DecryptContext>& context);

// NIST SP 800-38A 6.2. The chain value runs on from call to call. A length that isn't a whole
// number of blocks is refused with kFailed, and the bytes stay as they are.
Status aes_cbc_decrypt(DecryptContext& context, std::size_t length, const std::uint8_t* input,
                       std::uint8_t* output);

// NIST SP 800-38A 6.5. The counter runs on from call to call, and each call starts at a fresh
// keystream block: what a call leaves of its last block is never used.
Status aes_ctr_encrypt(DecryptContext& context, std::size_t length, const std::uint8_t* input,
                       std::uint8_t* output);

}  // namespace mediasplit
