#include "support/AesGcm.h"

#include <cstring>

namespace tidewell {
namespace {

std::string bytes(std::string_view hex)
{
    std::string all;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        all += static_cast<char>(std::stoi(std::string{hex.substr(i, 2)}, nullptr, 16));
    return all;
}

/// Of NIST's CAVP archive (gcmEncryptExtIV256.rsp) and of McGrew and Viega (2005), 96-bit nonces and 128-bit
/// tags.
struct Vector {
    std::string_view key, nonce, associated, plain, sealed;
};
constexpr std::array vectors{
    Vector{"b52c505a37d78eda5dd34f20c22540ea1b58963cf8e5bf8ffa85f9f2492505b4", "516c33929df5a3284ff463d7", "",
           "", "bdc1ac884d332457a1d2664f168c76f0"},
    Vector{"78dc4e0aaf52d935c3c01eea57428f00ca1fd475f5da86a49c8dd73d68c8e223", "d79cf22d504cc793c3fb6c8a",
           "b96baa8c1c75a671bfb2d08d06be5f36", "", "3e5d486aa2e30b22e040b85723a06e76"},
    Vector{"31bdadd96698c204aa9ce1448ea94ae1fb4a9a0b3c9d773b51bb1822666b8f22", "0d18e06c7c725ac9e362e1ce", "",
           "2db5168e932556f8089a0622981d017d",
           "fa4362189661d163fcd6a56d8bf0405ad636ac1bbedd5cc3ee727dc2ab4a9489"},
    Vector{"0000000000000000000000000000000000000000000000000000000000000000", "000000000000000000000000", "",
           "00000000000000000000000000000000",
           "cea7403d4d606b6e074ec5d3baf39d18d0d1c8a799996bf0265b98b5d48ab919"},
    Vector{"feffe9928665731c6d6a8f9467308308feffe9928665731c6d6a8f9467308308", "cafebabefacedbaddecaf888", "",
           "d9313225f88406e5a55909c5aff5269a86a7a9531534f7da2e4c303d8a318a72"
           "1c3c0c95956809532fcf0e2449a6b525b16aedf5aa0de657ba637b391aafd255",
           "522dc1f099567d07f47f37a32a84427d643a8cdcbfe5c0c97598a2bd2555d1aa"
           "8cb08e48590dbb3da7b08b1056828838c5f61e6393ba7a0abcc9f662898015ad"
           "b094dac5d93471bdec1a502270e3cc6c"},
};

TEST(AesGcm, sealsAndOpensAsPublished)
{
    EXPECT_TRUE(aesGcmWorks());
    for (const Vector& vector : vectors) {
        const SecretText key{bytes(vector.key)};
        std::array<std::byte, aesNonceSize> nonce{};
        std::memcpy(nonce.data(), bytes(vector.nonce).data(), nonce.size());
        const std::string sealed = bytes(vector.nonce) + bytes(vector.sealed);
        EXPECT_EQ(aesGcmSeal(key, nonce, bytes(vector.associated), bytes(vector.plain)), sealed);
        EXPECT_EQ(aesGcmOpen(key, bytes(vector.associated), sealed), bytes(vector.plain));
        EXPECT_EQ(aesGcmOpen(key, bytes(vector.associated) + 'x', sealed), std::nullopt);
        EXPECT_EQ(aesGcmOpen(SecretText{std::string(32, 'k')}, bytes(vector.associated), sealed),
                  std::nullopt);
        for (std::size_t bit = 0; bit < sealed.size() * 8; ++bit) {
            std::string damaged = sealed;
            damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << (bit % 8)));
            ASSERT_EQ(aesGcmOpen(key, bytes(vector.associated), damaged), std::nullopt) << bit;
        }
        for (std::size_t size = 0; size < sealed.size(); ++size)
            ASSERT_EQ(aesGcmOpen(key, bytes(vector.associated), sealed.substr(0, size)), std::nullopt)
                << size;
        for (const std::size_t size : {0U, 16U, 31U, 33U}) {
            EXPECT_FALSE(aesGcmSeal(SecretText{std::string(size, 'k')}, nonce, "", "x"));
            EXPECT_FALSE(aesGcmOpen(SecretText{std::string(size, 'k')}, bytes(vector.associated), sealed));
        }
    }
}

}  // namespace
}  // namespace tidewell
