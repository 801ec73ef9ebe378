#include "src/fmp4demuxer/decrypt.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/mp4_builder.h"

namespace mediasplit {
namespace {

using mp4::Bytes;
using mp4::hex;

// NIST SP 800-38A, appendix F.
const Bytes kKey = hex("2b7e151628aed2a6abf7158809cf4f3c");
const Bytes kPlain =
    hex("6bc1bee22e409f96e93d7e117393172a ae2d8a571e03ac9c9eb76fac45af8e51"
        "30c81c46a35ce411e5fbc1191a0a52ef f69f2445df4f9b17ad2b417be66c3710");
const Bytes kCbcIv = hex("000102030405060708090a0b0c0d0e0f");
const Bytes kCbcCipher =
    hex("7649abac8119b246cee98e9b12e9197d 5086cb9b507219ee95db113a917678b2"
        "73bed6b8e3c1743b7116e69e22229516 3ff1caa1681fac09120eca307586e1a7");
const Bytes kCounter = hex("f0f1f2f3f4f5f6f7f8f9fafbfcfdfeff");
const Bytes kCtrCipher =
    hex("874d6191b620e3261bef6864990db6ce 9806f66b7970fdff8617187bb9fffdff"
        "5ae4df3edbd5d35e5b4f09020db03eab 1e031dda2fbe03d1792170a0f3009cee");

std::unique_ptr<DecryptContext> make(std::uint32_t mode, const Bytes& iv) {
    return decrypt_aes_create(mode, kKey.data(), kKey.size(), iv.data(), iv.size());
}

Bytes crypt(DecryptContext& context, Bytes bytes) {
    EXPECT_EQ(context.crypt(context, bytes.size(), bytes.data(), bytes.data()), Status::kOk);
    return bytes;
}

Bytes part(const Bytes& bytes, std::size_t from, std::size_t count) {
    return {bytes.begin() + static_cast<std::ptrdiff_t>(from),
            bytes.begin() + static_cast<std::ptrdiff_t>(from + count)};
}

TEST(Decrypt, CbcGivesThePublishedPlainText) {
    const auto context = make(kDecryptModeCbc, kCbcIv);
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(crypt(*context, kCbcCipher), kPlain);
}

TEST(Decrypt, CtrGivesThePublishedPlainText) {
    const auto context = make(kDecryptModeCtr, kCounter);
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(crypt(*context, kCtrCipher), kPlain);
}

TEST(Decrypt, CbcChainRunsOnFromCallToCall) {
    const auto context = make(kDecryptModeCbc, kCbcIv);
    EXPECT_EQ(crypt(*context, part(kCbcCipher, 0, 16)), part(kPlain, 0, 16));
    EXPECT_EQ(crypt(*context, part(kCbcCipher, 16, 48)), part(kPlain, 16, 48));
}

TEST(Decrypt, CtrCounterRunsOnFromCallToCall) {
    const auto context = make(kDecryptModeCtr, kCounter);
    EXPECT_EQ(crypt(*context, part(kCtrCipher, 0, 32)), part(kPlain, 0, 32));
    EXPECT_EQ(crypt(*context, part(kCtrCipher, 32, 32)), part(kPlain, 32, 32));
}

TEST(Decrypt, CtrCallStartsAtAFreshKeystreamBlock) {
    const auto context = make(kDecryptModeCtr, kCounter);
    EXPECT_EQ(crypt(*context, part(kCtrCipher, 0, 5)), part(kPlain, 0, 5));
    // The second block of the keystream, not the rest of the first.
    EXPECT_EQ(crypt(*context, part(kCtrCipher, 16, 16)), part(kPlain, 16, 16));
}

TEST(Decrypt, CbcRefusesAPartOfABlockAndLeavesTheBytes) {
    const auto context = make(kDecryptModeCbc, kCbcIv);
    Bytes bytes = part(kCbcCipher, 0, 20);
    EXPECT_EQ(aes_cbc_decrypt(*context, bytes.size(), bytes.data(), bytes.data()), Status::kFailed);
    EXPECT_EQ(bytes, part(kCbcCipher, 0, 20));
    EXPECT_EQ(crypt(*context, part(kCbcCipher, 0, 16)), part(kPlain, 0, 16));
}

TEST(Decrypt, NothingHappensWithoutBytes) {
    const auto context = make(kDecryptModeCtr, kCounter);
    std::uint8_t byte = 7;
    EXPECT_EQ(aes_ctr_encrypt(*context, 0, &byte, &byte), Status::kOk);
    EXPECT_EQ(aes_ctr_encrypt(*context, 1, nullptr, &byte), Status::kOk);
    EXPECT_EQ(aes_cbc_decrypt(*context, 16, &byte, nullptr), Status::kOk);
    EXPECT_EQ(byte, 7);
    EXPECT_EQ(Bytes(context->iv.begin(), context->iv.end()), kCounter);
}

TEST(Decrypt, CreateRefusesOtherModesAndKeySizes) {
    EXPECT_EQ(make(2, kCounter), nullptr);
    EXPECT_EQ(decrypt_aes_create(kDecryptModeCtr, nullptr, 16, nullptr, 0), nullptr);
    const Bytes long_key(64, 1);
    for (const std::size_t size : {0U, 1U, 15U, 17U, 31U, 33U, 64U}) {
        EXPECT_EQ(decrypt_aes_create(kDecryptModeCbc, long_key.data(), size, nullptr, 0), nullptr)
            << size;
        EXPECT_EQ(decrypt_aes_create(kDecryptModeCtr, long_key.data(), size, nullptr, 0), nullptr)
            << size;
    }
}

TEST(Decrypt, TakesKeysOf24And32Bytes) {
    // NIST SP 800-38A F.5.3 and F.5.5, first block.
    const Bytes key192 = hex("8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b");
    const Bytes key256 = hex("603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4");
    auto context = decrypt_aes_create(kDecryptModeCtr, key192.data(), 24, kCounter.data(), 16);
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(crypt(*context, hex("1abc932417521ca24f2b0459fe7e6e0b")), part(kPlain, 0, 16));
    context = decrypt_aes_create(kDecryptModeCtr, key256.data(), 32, kCounter.data(), 16);
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(crypt(*context, hex("601ec313775789a5b7a7f504bbf3d228")), part(kPlain, 0, 16));
}

TEST(Decrypt, StartValueIsZerosWithoutAnIv) {
    const auto context = decrypt_aes_create(kDecryptModeCtr, kKey.data(), 16, nullptr, 9);
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(Bytes(context->iv.begin(), context->iv.end()), Bytes(16, 0));
}

TEST(Decrypt, UpdateFillsAShortIvWithZerosAndCutsALongOne) {
    const auto context = make(kDecryptModeCtr, kCounter);
    EXPECT_EQ(decrypt_update_iv(context.get(), kKey.data(), 8), Status::kOk);
    EXPECT_EQ(Bytes(context->iv.begin(), context->iv.end()),
              hex("2b7e151628aed2a6 0000000000000000"));
    const Bytes long_iv(255, 9);
    decrypt_update_iv(context.get(), long_iv.data(), long_iv.size());
    EXPECT_EQ(Bytes(context->iv.begin(), context->iv.end()), Bytes(16, 9));
    decrypt_update_iv(context.get(), nullptr, 0);
    EXPECT_EQ(Bytes(context->iv.begin(), context->iv.end()), Bytes(16, 0));
    EXPECT_EQ(decrypt_update_iv(nullptr, kKey.data(), 8), Status::kOk);
}

TEST(Decrypt, DestroyEmptiesTheHandle) {
    auto context = make(kDecryptModeCbc, kCbcIv);
    decrypt_aes_destroy(context);
    EXPECT_EQ(context, nullptr);
    decrypt_aes_destroy(context);
}

}  // namespace
}  // namespace mediasplit
