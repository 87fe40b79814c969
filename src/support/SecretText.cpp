#include "support/SecretText.h"

#include <openssl/crypto.h>

#include <utility>

namespace tidewell {

void wipe(void* data, std::size_t size) noexcept
{
    if (size != 0)
        OPENSSL_cleanse(data, size);
}

SecretText::SecretText(std::string&& text) : bytes_(text.begin(), text.end())
{
    wipe(text.data(), text.size());
    text.clear();
}

SecretText& SecretText::operator=(const SecretText& other)
{
    if (this != &other)
        *this = SecretText{other};  // Copied first: an exception then leaves this text as it was.
    return *this;
}

SecretText& SecretText::operator=(SecretText&& other) noexcept
{
    if (this != &other) {
        wipe(bytes_.data(), bytes_.size());
        bytes_ = std::exchange(other.bytes_, {});
    }
    return *this;
}

SecretText::~SecretText() { wipe(bytes_.data(), bytes_.size()); }

bool SecretText::operator==(const SecretText& other) const
{
    return bytes_.size() == other.bytes_.size() &&
           (bytes_.empty() || CRYPTO_memcmp(bytes_.data(), other.bytes_.data(), bytes_.size()) == 0);
}

}  // namespace tidewell
