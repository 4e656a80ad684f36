#include "support/sha256.h"

#include <array>
#include <new>
#include <stdexcept>

#include <openssl/evp.h>

namespace morvane {

namespace {

void require(int result) {
    if (result != 1)
        throw std::runtime_error("SHA-256 failed in the cryptography library");
}

// Fetched once and kept to the end of the process: a fetch per file costs more than a small file.
const EVP_MD* digest() {
    static const EVP_MD* const fetched = ::EVP_MD_fetch(nullptr, "SHA256", nullptr);
    if (fetched == nullptr)
        throw std::runtime_error("SHA-256 is missing from the cryptography library");
    return fetched;
}

struct FreeContext {
    void operator()(EVP_MD_CTX* context) const { ::EVP_MD_CTX_free(context); }
};

}  // namespace

struct Sha256::Context {
    std::unique_ptr<EVP_MD_CTX, FreeContext> evp{::EVP_MD_CTX_new()};
};

Sha256::Sha256() : context_(std::make_unique<Context>()) {
    if (!context_->evp)
        throw std::bad_alloc();
    reset();
}

Sha256::~Sha256() = default;
Sha256::Sha256(Sha256&&) noexcept = default;
Sha256& Sha256::operator=(Sha256&&) noexcept = default;

void Sha256::reset() {
    require(::EVP_DigestInit_ex2(context_->evp.get(), digest(), nullptr));
}

void Sha256::update(const void* bytes, std::size_t count) {
    require(::EVP_DigestUpdate(context_->evp.get(), bytes, count));
}

std::string Sha256::finish() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
    unsigned length = 0;
    require(::EVP_DigestFinal_ex(context_->evp.get(), bytes.data(), &length));
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    text.reserve(std::size_t{2} * length);
    for (unsigned index = 0; index < length; ++index) {
        text += digits[bytes[index] >> 4];
        text += digits[bytes[index] & 0xF];
    }
    return text;
}

}  // namespace morvane
