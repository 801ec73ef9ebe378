#include "src/fmp4demuxer/decrypt.h"

#include <algorithm>
#include <array>

namespace mediasplit {
namespace {

Status from_library(int result) {
    return result == 0 ? Status::kOk : Status::kFailed;
}

// The library fills its tables at the first key of all, and takes no lock for it: two workers must
// not do that side by side. Each direction has tables of its own.
bool fill_tables() {
    constexpr std::array<std::uint8_t, kAesBlockSize> kKey{};
    mbedtls_aes_context aes;
    mbedtls_aes_init(&aes);
    const bool filled = mbedtls_aes_setkey_enc(&aes, kKey.data(), 128) == 0 &&
                        mbedtls_aes_setkey_dec(&aes, kKey.data(), 128) == 0;
    mbedtls_aes_free(&aes);
    return filled;
}

bool nothing_to_do(std::size_t length, const std::uint8_t* input, const std::uint8_t* output) {
    return length == 0 || input == nullptr || output == nullptr;
}

}  // namespace

Status aes_cbc_decrypt(DecryptContext& context, std::size_t length, const std::uint8_t* input,
                       std::uint8_t* output) {
    if (nothing_to_do(length, input, output)) {
        return Status::kOk;
    }
    return from_library(mbedtls_aes_crypt_cbc(&context.aes, MBEDTLS_AES_DECRYPT, length,
                                              context.iv.data(), input, output));
}

Status aes_ctr_encrypt(DecryptContext& context, std::size_t length, const std::uint8_t* input,
                       std::uint8_t* output) {
    if (nothing_to_do(length, input, output)) {
        return Status::kOk;
    }
    // The offset within the block isn't carried from call to call, unlike ISO/IEC 23001-7 9.5: this
    // is deliberate.
    std::size_t offset_in_block = 0;
    std::array<std::uint8_t, kAesBlockSize> keystream{};
    return from_library(mbedtls_aes_crypt_ctr(&context.aes, length, &offset_in_block,
                                              context.iv.data(), keystream.data(), input, output));
}

std::unique_ptr<DecryptContext> decrypt_aes_create(std::uint32_t mode, const std::uint8_t* key,
                                                   std::size_t key_size, const std::uint8_t* iv,
                                                   std::size_t iv_size) {
    if (key == nullptr || key_size > 32 || (mode != kDecryptModeCbc && mode != kDecryptModeCtr)) {
        return nullptr;
    }
    static const bool tables_are_filled = fill_tables();
    static_cast<void>(tables_are_filled);
    auto context = std::make_unique<DecryptContext>();
    context->mode = mode;
    const auto key_bits = static_cast<unsigned int>(key_size * 8);
    int result = 0;
    if (mode == kDecryptModeCbc) {
        context->crypt = aes_cbc_decrypt;
        result = mbedtls_aes_setkey_dec(&context->aes, key, key_bits);
    } else {
        context->crypt = aes_ctr_encrypt;
        result = mbedtls_aes_setkey_enc(&context->aes, key, key_bits);
    }
    if (result != 0) {
        return nullptr;
    }
    if (iv != nullptr) {
        decrypt_update_iv(context.get(), iv, iv_size);
    }
    return context;
}

Status decrypt_update_iv(DecryptContext* context, const std::uint8_t* iv, std::size_t iv_size) {
    if (context == nullptr) {
        return Status::kOk;
    }
    context->iv.fill(0);
    if (iv != nullptr) {
        std::copy_n(iv, std::min(iv_size, context->iv.size()), context->iv.begin());
    }
    return Status::kOk;
}

void decrypt_aes_destroy(std::unique_ptr<DecryptContext>& context) {
    context.reset();
}

}  // namespace mediasplit
