#include "support/AesGcm.h"

#include <openssl/evp.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

namespace tidewell {

namespace {

/// The library counts in int.
constexpr std::size_t longestInput = std::numeric_limits<int>::max();

const unsigned char* bytesOf(std::string_view text)
{
    return reinterpret_cast<const unsigned char*>(text.data());
}
unsigned char* bytesOf(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

enum class Direction : int { open = 0, seal = 1 };  // As EVP_CipherInit_ex counts them.

using Context =
    std::unique_ptr<EVP_CIPHER_CTX, decltype([](EVP_CIPHER_CTX* context) { EVP_CIPHER_CTX_free(context); })>;

/// A cipher that has its key, its nonce and the associated data; none when the library or the sizes refuse.
Context begin(Direction direction, const SecretText& key, std::string_view nonce, std::string_view associated)
{
    if (key.reveal().size() != aesKeySize || nonce.size() != aesNonceSize || associated.size() > longestInput)
        return nullptr;
    Context context{EVP_CIPHER_CTX_new()};
    int size = 0;
    // 96 bits is the nonce's size that the cipher has by itself.
    if (!context ||
        EVP_CipherInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, bytesOf(key.reveal()), bytesOf(nonce),
                          static_cast<int>(direction)) != 1 ||
        EVP_CipherUpdate(context.get(), nullptr, &size, bytesOf(associated),
                         static_cast<int>(associated.size())) != 1)
        return nullptr;
    return context;
}

/// All of `from` in one step; `to` has room for as much.
bool transform(EVP_CIPHER_CTX* context, std::string_view from, unsigned char* to)
{
    int size = 0;
    return EVP_CipherUpdate(context, to, &size, bytesOf(from), static_cast<int>(from.size())) == 1 &&
           size == static_cast<int>(from.size());
}

std::optional<std::string> seal(const SecretText& key, std::string_view nonce, std::string_view associated,
                                std::string_view plain)
{
    if (plain.size() > longestInput)
        return std::nullopt;
    const Context context = begin(Direction::seal, key, nonce, associated);
    std::string sealed(aesNonceSize + plain.size() + aesTagSize, '\0');
    unsigned char* const body = bytesOf(sealed) + aesNonceSize;
    unsigned char* const tag = body + plain.size();
    int none = 0;
    if (!context || !transform(context.get(), plain, body) ||
        EVP_CipherFinal_ex(context.get(), tag, &none) != 1 ||
        EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_AEAD_GET_TAG, aesTagSize, tag) != 1)
        return std::nullopt;
    std::ranges::copy(nonce, sealed.begin());
    return sealed;
}

std::optional<std::string> open(const SecretText& key, std::string_view associated, std::string_view sealed)
{
    if (sealed.size() < aesNonceSize + aesTagSize || sealed.size() > longestInput)
        return std::nullopt;
    const std::string_view nonce = sealed.substr(0, aesNonceSize);
    const std::string_view body = sealed.substr(aesNonceSize, sealed.size() - aesNonceSize - aesTagSize);
    std::string tag{sealed.substr(sealed.size() - aesTagSize)};
    const Context context = begin(Direction::open, key, nonce, associated);
    std::string plain(body.size(), '\0');
    std::array<unsigned char, aesTagSize> rest{};
    int none = 0;
    if (context && transform(context.get(), body, bytesOf(plain)) &&
        EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_AEAD_SET_TAG, aesTagSize, tag.data()) == 1 &&
        EVP_CipherFinal_ex(context.get(), rest.data(), &none) == 1)
        return plain;
    wipe(plain.data(), plain.size());  // Nobody vouches for it.
    return std::nullopt;
}

std::string fromHex(std::string_view digits)
{
    const auto value = [](char digit) { return digit <= '9' ? digit - '0' : digit - 'a' + 10; };
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes += static_cast<char>(value(digits[i]) * 16 + value(digits[i + 1]));
    return bytes;
}

/// McGrew and Viega, "The Galois/Counter Mode of Operation (GCM)", 2005, appendix B.
struct Vector {
    std::string_view key, nonce, associated, plain, cipher, tag;
};
constexpr std::array vectors{
    Vector{"0000000000000000000000000000000000000000000000000000000000000000", "000000000000000000000000", "",
           "", "", "530f8afbc74536b9a963b4f1c4cb738b"},  // Test case 13: nothing but a tag.
    Vector{"feffe9928665731c6d6a8f9467308308feffe9928665731c6d6a8f9467308308", "cafebabefacedbaddecaf888",
           "feedfacedeadbeeffeedfacedeadbeefabaddad2",
           "d9313225f88406e5a55909c5aff5269a86a7a9531534f7da2e4c303d8a318a72"
           "1c3c0c95956809532fcf0e2449a6b525b16aedf5aa0de657ba637b39",
           "522dc1f099567d07f47f37a32a84427d643a8cdcbfe5c0c97598a2bd2555d1aa"
           "8cb08e48590dbb3da7b08b1056828838c5f61e6393ba7a0abcc9f662",
           "76fc6ece0f4e1768cddf8853bb2d551b"},  // Test case 16: all parts, and no whole number of blocks.
};

bool computes(const Vector& vector)
{
    const SecretText key{fromHex(vector.key)};
    const std::string nonce = fromHex(vector.nonce);
    const std::string associated = fromHex(vector.associated);
    const std::string plain = fromHex(vector.plain);
    std::string expected = nonce + fromHex(vector.cipher) + fromHex(vector.tag);
    if (seal(key, nonce, associated, plain) != expected || open(key, associated, expected) != plain)
        return false;
    expected.back() = static_cast<char>(expected.back() ^ 1);
    return !open(key, associated, expected);
}

}  // namespace

std::optional<std::string> aesGcmSeal(const SecretText& key, std::span<const std::byte, aesNonceSize> nonce,
                                      std::string_view associatedData, std::string_view plain)
{
    if (!aesGcmWorks())
        return std::nullopt;
    return seal(key, {reinterpret_cast<const char*>(nonce.data()), nonce.size()}, associatedData, plain);
}

std::optional<std::string> aesGcmOpen(const SecretText& key, std::string_view associatedData,
                                      std::string_view sealed)
{
    if (!aesGcmWorks())
        return std::nullopt;
    return open(key, associatedData, sealed);
}

bool aesGcmWorks()
{
    static const bool works = std::ranges::all_of(vectors, computes);
    return works;
}

}  // namespace tidewell
